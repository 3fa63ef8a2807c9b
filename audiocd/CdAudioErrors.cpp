#include "CdAudioErrors.h"

#include <array>
#include <utility>

namespace plattmix::audiocd {

namespace {

constexpr std::array<std::pair<int, const char*>, 18> kTexts{{
    {kCdAudioOk, "Der Befehl wurde ausgeführt."},
    {kCdAudioUnknownCommand, "Unbekannter Befehl."},
    {kCdAudioMissingDevice, "Der Befehl nennt kein Gerät."},
    {kCdAudioUnknownKeyword, "Der Befehl enthält ein unbekanntes Schlüsselwort."},
    {kCdAudioMissingValue, "Einem Schlüsselwort des Befehls fehlt sein Wert."},
    {kCdAudioBadNumber, "Ein Wert des Befehls ist keine gültige Zahl oder Zeit."},
    {kCdAudioOpenQuote, "Ein Anführungszeichen im Befehl wird nicht geschlossen."},
    {kCdAudioWrongType, "Das Gerät kennt nur den Typ CDAudio."},
    {kCdAudioNoSuchDrive, "Dieses Laufwerk gibt es nicht."},
    {kCdAudioAliasInUse, "Der Alias ist bereits vergeben."},
    {kCdAudioNotOpen, "Unter diesem Alias ist kein Gerät geöffnet."},
    {kCdAudioNotReady, "Das Laufwerk ist nicht bereit oder enthält keine Disk."},
    {kCdAudioOutOfRange, "Die Position oder der Track liegt nicht auf der Disk."},
    {kCdAudioNotAudio, "An dieser Position liegt kein Audiotrack."},
    {kCdAudioNoOutput, "Keine Audioausgabe verfügbar."},
    {kCdAudioReadFailed, "Die Disk konnte beim Abspielen nicht gelesen werden."},
    {kCdAudioDoorFailed, "Die Schublade des Laufwerks ließ sich nicht bewegen."},
    {kCdAudioBadTimeFormat, "Dieses Zeitformat wird nicht unterstützt."},
}};

}  // namespace

std::string CdAudioErrorText(int code) {
    for (const auto& [known, text] : kTexts) {
        if (known == code)
            return text;
    }
    return "Unbekannter Fehler " + std::to_string(code) + ".";
}

}  // namespace plattmix::audiocd
