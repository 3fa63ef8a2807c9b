#include "Commands.h"

#include <ostream>

#include "BurnCommand.h"
#include "CompilationCommand.h"
#include "DriveCommands.h"
#include "ImageList.h"
#include "IsoCommand.h"
#include "MountCommand.h"
#include "RipCommand.h"
#include "TitleOptions.h"
#include "TrayCommand.h"

namespace plattmix::cli {

ParseResult ParseCommandLine(const std::vector<std::string>& words) {
    return ParseCliArgs(
        words,
        {"--drive", "--tracks", "--format", "--out", "--prefix", "--number", "--volume", "--image",
         "--list", "--track", "--seconds", "--release", "--offset"},
        {"--demo", "--number-first", "--multisession", "--close", "--eject", "--verify", "--yes",
         "--musicbrainz", "--secure"});
}

void PrintUsage(std::ostream& out) {
    out << "Aufruf: plattmix-cli BEFEHL [OPTIONEN]\n"
           "\n"
           "Befehle:\n"
           "  drives [--drive LAUFWERK]   Laufwerksliste anzeigen\n"
           "  toc [--drive LAUFWERK] [--musicbrainz [--release N]]\n"
           "                              Trackliste der Disk anzeigen\n"
           "  rip [--drive LAUFWERK] --out ORDNER [--tracks 1,3-5] [--format wav]\n"
           "      [--prefix NAME] [--number running|track] [--number-first]\n"
           "      [--musicbrainz [--release N]] [--secure [--offset N]]\n"
           "                              Tracks rippen (Positionen wie in der Trackliste)\n"
           "  image list | add PFAD | add --demo | remove PFAD\n"
           "                              Disk-Images, die das Fenster ohne Laufwerk anbietet\n"
           "  iso QUELLORDNER ZIEL.iso [--volume NAME]\n"
           "                              ISO-Image eines Ordners erstellen\n"
           "  compilation save LISTE PFAD... | load LISTE | size LISTE [--drive LAUFWERK]\n"
           "                              Listendatei speichern, laden, messen\n"
           "  burn --drive LAUFWERK (--image DATEI.iso | --list LISTE.txt | PFAD...)\n"
           "      [--multisession] [--close] [--eject] [--verify] [--volume NAME]\n"
           "                              ISO-Image oder Zusammenstellung brennen (mit --verify\n"
           "                              danach von der Disk lesen und vergleichen)\n"
           "  erase --drive LAUFWERK [--eject] [--yes]\n"
           "                              wiederbeschreibbare Disk löschen\n"
           "  mount ABBILD.iso | unmount ABBILD.iso\n"
           "                              ISO-Datei als Laufwerk verbinden oder trennen\n"
           "  tray --drive LAUFWERK [open|close]\n"
           "                              Schubladenzustand (1, 0, -1) zeigen, öffnen, schließen\n"
           "  play --drive LAUFWERK --track N --seconds S\n"
           "                              einen Track S Sekunden lang abspielen\n"
           "\n"
           "LAUFWERK ist ein Laufwerk (/dev/sr0) oder ein Disk-Image (.cue, .iso).\n"
           "--musicbrainz sucht die Titel online (MusicBrainz), sonst gilt der CD-Text;\n"
           "--release N nimmt die N-te gefundene Veröffentlichung.\n"
           "--secure rippt sicher: jeder Track wird mit AccurateRip geprüft oder zweimal\n"
           "gelesen, Rip.log und Rip.cue kommen in den Zielordner; --offset N ist der\n"
           "Leseversatz des Laufwerks in Samples (sonst der aus Diskolo.ini).\n"
           "Ohne --drive: die optischen Laufwerke des Rechners, sonst die eingebaute Demo-Disk.\n";
}

int RunCommand(const CliArgs& args, std::ostream& out, std::ostream& err, bool terminal) {
    if (args.command == "help" || args.command == "--help") {
        PrintUsage(out);
        return kExitDone;
    }
    if (args.command == "image")
        return RunImageCommand(args, out, err);
    if (args.command == "rip")
        return RunRipCommand(args, out, err, terminal);
    if (args.command == "iso")
        return RunIsoCommand(args, out, err, terminal);
    if (args.command == "burn")
        return RunBurnCommand(args, out, err, terminal);
    if (args.command == "erase")
        return RunEraseCommand(args, out, err, terminal);
    if (args.command == "mount")
        return RunMountCommand(args, out, err);
    if (args.command == "unmount")
        return RunUnmountCommand(args, out, err);
    if (args.command == "tray")
        return RunTrayCommand(args, out, err);
    if (args.command == "play")
        return RunPlayCommand(args, out, err, terminal);
    if (args.command == "compilation")
        return RunCompilationCommand(args, out, err);
    if (args.command == "toc" && args.options.contains("--musicbrainz"))
        return RunTitledToc(args, out, err);
    if (args.command == "drives" || args.command == "toc")
        return RunDriveCommand(args, out, err);
    err << "Unbekannter Befehl: " << args.command << '\n';
    PrintUsage(err);
    return kExitUsage;
}

}  // namespace plattmix::cli
