// "Sicher rippen (AccurateRip)" on the ripping page: the box and its setting, and the secure job
// the Start command runs in place of the plain one while the box is on.
#include <QCheckBox>
#include <QLabel>

#include "CurlHttpGet.h"
#include "OutputFormats.h"
#include "RipModeSettings.h"
#include "SecureRipJob.h"
#include "frmMain.h"

namespace plattmix::window {

void frmMain::CreateSecureControls() {
    CheckSecure = new QCheckBox(QStringLiteral("Sicher rippen (AccurateRip)"), centralWidget());
}

void frmMain::LoadSecureSettings() {
    CheckSecure->setChecked(audiocd::SecureModeSetting(paths_));
}

// A settings file that never had the secure mode on stays as it was.
void frmMain::SaveSecureSettings() {
    using audiocd::kSecureKey, audiocd::kSecureSection;
    if (CheckSecure->isChecked() || !shell::ReadIni(paths_, kSecureSection, kSecureKey).empty())
        shell::WriteIni(paths_, kSecureSection, kSecureKey, CheckSecure->isChecked() ? "1" : "0");
}

// The same rows, names, format and encoder as the plain job; the drive's offset and the server
// from the settings. Each row's result carries the verdict; when the record could not be had,
// the status line says why (Rip.log tells the rest).
void frmMain::RunSecureRip(const audiocd::RipJobParams& rip, const audiocd::JobHooks& hooks,
                           const audiocd::RowTextFn& rowText, const audiocd::EncodeFn& encoder) {
    auto params = audiocd::SecureRipParamsFor(*transport_, rip, paths_);
    params.httpGet = audiocd::CurlHttpGet;
    params.extension = std::string(encode::FormatAt(rip.formatIndex).extension);
    const auto result = audiocd::RunSecureRipJob(*transport_, params, hooks, rowText, encoder);
    if (!result.accurateRipStatus.empty())
        Label5[0]->setText(QString::fromStdString(result.accurateRipStatus));
}

}  // namespace plattmix::window
