// The main window's life: the load, the two timers that fill and refresh the drive list, the
// buttons that belong to every page, the F9 key and the orderly end.
#include "frmMain.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QFrame>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QUrl>

#include "AlsaSink.h"
#include "BlockNode.h"
#include "CdAudioSharedTransport.h"
#include "DriveList.h"
#include "MountPoint.h"
#include "MsgBox.h"
#include "OutputFormats.h"
#include "QtTranslation.h"
#include "TabSize.h"
#include "TabStrip.h"
#include "TrackList.h"
#include "TrackListView.h"
#include "TransportChoice.h"
#include "modPaths.h"

namespace plattmix::window {

namespace {

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

struct Column {
    const char* caption;
    int width;
};
const Column kColumns[] = {{"Track", 80}, {"Dauer", 80},   {"Anfang", 100},
                           {"Ende", 100}, {"Inhalt", 100}, {"Ergebnis", 200}};

const char* const kTabs[] = {"CD/DVD Rippen      ", "    ISO Image erstellen  ",
                             "    CD Brennen  "};

constexpr int kKeyF9 = Qt::Key_F9;

const char* const kTextNoAudioCd = "Keine Audio CD im Laufwerk ---> Button Aktualisieren";
// Check6: the disc is read back after a burn.
const char* const kVerifyKey = "Pruefen";

}  // namespace

WindowOptions DefaultWindowOptions() {
    return {shell::LanguagesFolder(),
            CreatePassThroughTransport,
            CreateFallbackTransport,
            {},
            {},
            {},
            {}};
}

frmMain::frmMain(shell::SettingsPaths paths, WindowOptions options, QWidget* parent)
    : QMainWindow(parent), paths_(std::move(paths)), options_(std::move(options)) {
    CreateControls();
    ShowRipPage();
    qApp->installEventFilter(this);
}

frmMain::~frmMain() {
    qApp->removeEventFilter(this);
}

bool frmMain::Form_Load() {
    FillOutputFormats();
    AddColumns();
    AddTabs();
    ApplyTabSize();
    LoadRecentFolders();
    if (!ChooseTransport())
        return false;
    LoadSettings();
    LoadLanguage();
    ShowRipPage();
    Timer1->start();
    return true;
}

void frmMain::FillOutputFormats() {
    for (const auto& format : encode::kOutputFormats)
        ComboBox3->addItem(QString::fromUtf8(format.caption.data(),
                                             static_cast<qsizetype>(format.caption.size())));
    ComboBox3->setCurrentIndex(0);
}

void frmMain::AddColumns() {
    QStringList captions;
    for (const auto& column : kColumns)
        captions << QString::fromUtf8(column.caption);
    ExplorerListView1->setHeaderLabels(captions);
    for (int i = 0; i < static_cast<int>(std::size(kColumns)); ++i) {
        ExplorerListView1->setColumnWidth(i, kColumns[i].width);
        ExplorerListView1->headerItem()->setTextAlignment(i, Qt::AlignLeft | Qt::AlignVCenter);
    }
    ExplorerListView1->header()->setStretchLastSection(true);
}

void frmMain::AddTabs() {
    for (const char* caption : kTabs)
        TabStrip1->addTab(QString::fromUtf8(caption));
    TabStrip1->setCurrentIndex(kPageRip);
}

void frmMain::ApplyTabSize() {
    const QScreen* shown = screen() != nullptr ? screen() : QGuiApplication::primaryScreen();
    const double dpi = shown != nullptr ? shown->logicalDotsPerInchX() : 96.0;
    TabStrip1->SetTabWidth(TabSizeForTwipsPerPixel(TwipsPerPixel(dpi)));
}

void frmMain::LoadRecentFolders() {
    std::vector<std::string> entries;
    shell::LoadComboFromSection(paths_, entries, "ComboBox1");
    for (const auto& entry : entries)
        ComboBox1->addItem(Q(entry));
    if (ComboBox1->count() > 0)
        ComboBox1->setCurrentIndex(0);
}

bool frmMain::ChooseTransport() {
    if (!SelectDriveTransport())
        return false;
    // The player reads the disc on its own thread; the window's reads and its share one lock.
    auto shared = std::make_unique<audiocd::CdAudioSharedTransport>(std::move(transport_));
    shared_ = shared.get();
    transport_ = std::move(shared);
    cdAudio_ = std::make_unique<audiocd::CdAudio>(
        *transport_, options_.audioSinks ? options_.audioSinks : audiocd::AlsaSinkFactory());
    cdAudio_->SetErrorBox(
        [this](const std::string& text) { MsgBox(this, Q(text), MsgBoxStyle::Exclamation); });
    player_ = std::make_unique<audiocd::CdPlayerButtons>(*cdAudio_, kPlayerAlias);
    return true;
}

bool frmMain::SelectDriveTransport() {
    auto selected =
        scsi::SelectUsableTransport(options_.firstTransport, options_.fallbackTransport);
    transport_ = std::move(selected.transport);
    if (transport_)
        return true;
    if (selected.refused) {
        // A drive this user may not open: say why and which group grants access, then go on
        // without drives, so that the pages that need none stay usable. Disc images do not
        // stand in for a drive that is there.
        MsgBox(this, Q(scsi::RefusedAccessMessage(*selected.refused)), MsgBoxStyle::Exclamation);
        transport_ = CreateTransportWithoutDrives();
        return true;
    }
    // Without any drive the disc images named in the settings stand in for drives.
    const auto images = shell::ReadIniSection(paths_.SettingsFile, kImageSection);
    ImageDrives drives = LoadImageDrives(images);
    if (!drives.failures.empty())
        MsgBox(this, Q(ImageFailureMessage(drives.failures)), MsgBoxStyle::Exclamation);
    transport_ = std::move(drives.transport);
    if (transport_)
        return true;
    MsgBox(this, QString::fromUtf8(scsi::kNoTransportMessage), MsgBoxStyle::Exclamation);
    return false;
}

void frmMain::LoadSettings() {
    bool isNumber = false;
    const int unload = Q(shell::ReadIni(paths_, "Diskolo", "Unload")).trimmed().toInt(&isNumber);
    Check1->setChecked(isNumber && unload != 0);
    Text1->setText(Q(shell::ReadIni(paths_, "Diskolo", "Text1")));
    Check6->setChecked(Q(shell::ReadIni(paths_, "Diskolo", kVerifyKey)).trimmed().toInt() != 0);
    LoadTitleSettings();
    LoadSecureSettings();
}

void frmMain::LoadLanguage() {
    lang_ = shell::LanguageTexts(options_.languagesFolder,
                                 shell::ReadLanguageName(paths_.SuiteOptionsFile));
    InstallQtTranslation(lang_.LanguageName());
    if (lang_.LanguageName() == "default" || lang_.LanguageName().empty())
        FillSelectionCommands();
    else
        TranslateWindow();
}

void frmMain::Timer1_Timer() {
    Timer1->stop();
    FillDriveList();
    isLoading = false;
    emit DriveListFilled();
}

void frmMain::FillDriveList() {
    PlaceBusyPicture();
    Picture1->show();
    Picture1->repaint();
    const auto warn = [this](std::string_view text) {
        MsgBox(this, Q(std::string(text)), MsgBoxStyle::Exclamation);
    };
    const auto entries = audiocd::FillDriveList(*transport_, warn);
    {
        const QSignalBlocker quiet(cboDrv);
        cboDrv->clear();
        for (const auto& entry : entries)
            cboDrv->addItem(Q(entry.text), QVariant(static_cast<int>(entry.index)));
        cboDrv->setCurrentIndex(cboDrv->count() > 0 ? 0 : -1);
    }
    if (cboDrv->count() > 0)
        cboDrv_Click();
    Picture1->hide();
}

void frmMain::cboDrv_Click() {
    if (cboDrv->currentIndex() < 0 || !transport_)
        return;
    auto index = static_cast<int16_t>(cboDrv->currentData().toInt());
    const std::string handle = transport_->DriveHandle(index);
    driveRoot_ = options_.driveRoot ? options_.driveRoot(handle)
                                    : DriveRootOf(scsi::BlockNodeOf(*transport_, handle));
    // The list view shows the track list on the ripping page only; the other pages keep their
    // own rows in it. A job on the ripping page keeps its rows until it ends.
    if (currentPage_ == kPageRip && jobPage_ != kPageRip) {
        ShowTrackList(handle);
        ShowRipPage();
    } else if (currentPage_ == kPageBurn && !isLoading) {
        DrawDiscUsage();
        TotalSizeZusammenstellung();
    }
}

void frmMain::ShowTrackList(const std::string& handle) {
    const audiocd::TrackList list = audiocd::ReadTrackList(*transport_, handle);
    ExplorerListView1->clear();
    for (const auto& row : list.rows) {
        auto* item = new QTreeWidgetItem(ExplorerListView1);
        item->setText(0, QString::number(row.track));
        item->setText(1, Q(row.dauer));
        item->setText(2, Q(row.anfang));
        item->setText(3, Q(row.ende));
        item->setText(4, Q(row.inhalt));
        item->setCheckState(0, Qt::Unchecked);
        // The content kind the Start command reads: 1 audio, 2 data.
        item->setData(0, Qt::UserRole, row.inhalt == audiocd::kTextData ? 2 : 1);
        item->setData(0, kStartLbaRole, row.startLba);
    }
    std::string emptyText = list.emptyText;
    // The drive answered READ TOC, yet its table lists no track at all (a lead-out alone, or
    // not even that): there is nothing to rip or to image until another disc is read. A disc
    // of data tracks only is not this case: it lists its tracks and is offered as an image.
    if (list.rows.empty() && emptyText.empty())
        emptyText = kTextNoAudioCd;
    ExplorerListView1->SetEmptyListText(emptyText.empty() ? QString() : Tr(Q(emptyText)));
    IsDataCD = list.isDataCD;
    LookUpTitles(handle, list);
}

void frmMain::Timer2_Timer() {
    Timer2->stop();
    if (isBusy)
        return;
    if (currentPage_ != kPageBurn) {
        cboDrv_Click();
        ReopenPlayer();
    }
    UpdateTrayCaption();
    ProgressBar1->setValue(0);
    PictureNewValue->hide();
    DrawDiscUsage();
    if (currentPage_ == kPageBurn)
        TotalSizeZusammenstellung();
}

void frmMain::Command1_Click() {
    Timer2->start();
}

void frmMain::Command2_Click() {
    if (isBusy)
        Abbort = true;
    else
        close();
}

void frmMain::Command3_Click() {
    QDesktopServices::openUrl(QUrl::fromLocalFile(Q(paths_.SettingsFile)));
}

// One job at a time: a Start while another job runs or a stopped one still unwinds does nothing.
void frmMain::mnuSave_Click() {
    if (isBusy || jobPage_ != kNoJob)
        return;
    jobPage_ = currentPage_;
    if (currentPage_ == kPageBurn)
        StartBurnJob();
    else
        StartRipOrIso();
    jobPage_ = kNoJob;
}

bool frmMain::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyRelease) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (key->key() == kKeyF9 && !key->isAutoRepeat() && widget != nullptr &&
            widget->window() == this) {
            Command2->click();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void frmMain::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    PlaceBusyPicture();
}

void frmMain::closeEvent(QCloseEvent* event) {
    if (isBusy) {
        // The job stops at its next check; the next close goes through.
        event->ignore();
        Abbort = true;
        isBusy = false;
        return;
    }
    Form_Unload();
    event->accept();
}

void frmMain::Form_Unload() {
    if (unloaded_)
        return;
    unloaded_ = true;
    shell::WriteIni(paths_, "Diskolo", "Unload", Check1->isChecked() ? "1" : "0");
    const QString prefix = Text1->text();
    shell::WriteIni(paths_, "Diskolo", "Text1",
                    prefix.isEmpty() ? std::string("Track") : prefix.toStdString());
    // Written once it was switched on: a settings file that never had it stays as it was.
    if (Check6->isChecked() || !shell::ReadIni(paths_, "Diskolo", kVerifyKey).empty())
        shell::WriteIni(paths_, "Diskolo", kVerifyKey, Check6->isChecked() ? "1" : "0");
    SaveTitleSettings();
    SaveSecureSettings();
    StopPlayer();
    if (cdAudio_)
        SendCommand("close " + std::string(kPlayerAlias));
    playing_ = false;
    Timer6->stop();
}

}  // namespace plattmix::window
