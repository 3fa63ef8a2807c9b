// The main window: three pages on one tab strip (ripping an audio CD, making an ISO image,
// burning a disc), its start-up, its timers and its orderly end. The controls keep the names
// the program has always used for them; control arrays are indexed members.
#pragma once

#include <QMainWindow>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "BurnJob.h"
#include "BurnService.h"
#include "CdAudio.h"
#include "CdAudioSharedTransport.h"
#include "CdPlayerButtons.h"
#include "FolderListing.h"
#include "IAudioSink.h"
#include "ISCSI.h"
#include "IVirtualDriveService.h"
#include "RipJob.h"
#include "TitleLookup.h"
#include "TransportSelection.h"
#include "modLanguage.h"
#include "modSettings.h"

class QAction;
class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTimer;
class QTreeWidgetItem;

namespace plattmix::window {

class TabStrip;
class TrackListView;

// What the window needs from outside besides the settings paths; the tests move these.
struct WindowOptions {
    std::string languagesFolder;  // ends in "/"
    scsi::TransportFactory firstTransport;
    scsi::TransportFactory fallbackTransport;
    // The disc-writing service behind the burning page; empty means libburn.
    std::function<std::unique_ptr<authoring::IBurnService>()> burnService;
    // The service that attaches images as drives; empty means the one the system offers.
    std::function<std::unique_ptr<vdrive::IVirtualDriveService>()> virtualDrives;
    // Where the CD player's sound goes; empty means the desktop's audio output.
    audiocd::AudioSinkFactory audioSinks;
    // Where a drive's disc is mounted; empty means the kernel's mount table.
    std::function<std::string(const std::string& handle)> driveRoot;
};
WindowOptions DefaultWindowOptions();

enum Page { kNoJob = -1, kPageRip = 0, kPageIso = 1, kPageBurn = 2 };

// A track row keeps its first block under this role.
using audiocd::kPlayerAlias;
inline constexpr int kStartLbaRole = Qt::UserRole + 1;

class frmMain final : public QMainWindow {
    Q_OBJECT
  public:
    frmMain(shell::SettingsPaths paths, WindowOptions options, QWidget* parent = nullptr);
    ~frmMain() override;
    frmMain(const frmMain&) = delete;
    frmMain& operator=(const frmMain&) = delete;

    // The load. False when no transport works: the user has been told and the program ends.
    bool Form_Load();

    const shell::SettingsPaths& Paths() const { return paths_; }
    const shell::LanguageTexts& Language() const { return lang_; }
    // The drives themselves, below the lock the window shares with the player.
    scsi::ISCSI* Transport() const { return shared_ != nullptr ? &shared_->Inner() : nullptr; }
    const std::string& DriveRoot() const { return driveRoot_; }

    // Window-wide state.
    bool isBusy = false;
    bool Abbort = false;
    bool isLoading = true;
    bool IsDataCD = false;

    // The disc in the burning page's drive, as the last refresh found it (MB; 0 no disc, -1 a
    // closed one), and whether the drive is being asked right now.
    double DiskCapacity = 0;
    double DiskUsed = 0;
    bool DiskBusy = false;

    // The controls.
    TabStrip* TabStrip1 = nullptr;
    QComboBox* cboDrv = nullptr;
    TrackListView* ExplorerListView1 = nullptr;
    QComboBox* ComboBox1 = nullptr;
    QComboBox* ComboBox2 = nullptr;
    QComboBox* ComboBox3 = nullptr;
    QPushButton* cmdOpen = nullptr;
    QPushButton* Command1 = nullptr;
    QPushButton* Command2 = nullptr;
    QPushButton* Command3 = nullptr;
    QPushButton* Command4 = nullptr;
    std::array<QPushButton*, 1> Command5{};
    QPushButton* Command6 = nullptr;
    QPushButton* Command7 = nullptr;
    QPushButton* Command8 = nullptr;
    QPushButton* Command9 = nullptr;
    QPushButton* Command10 = nullptr;
    QPushButton* Command11 = nullptr;
    QPushButton* Command12 = nullptr;
    QPushButton* Command13 = nullptr;
    QPushButton* Command14 = nullptr;
    std::array<QPushButton*, 2> Command15{};
    QGroupBox* Frame1 = nullptr;
    QGroupBox* Frame2 = nullptr;
    std::array<QRadioButton*, 2> OptNameCounter{};
    std::array<QRadioButton*, 2> OptNameBurn{};
    QRadioButton* OptFormat = nullptr;
    QLineEdit* Text1 = nullptr;
    QLineEdit* Text2 = nullptr;
    QLineEdit* Text3 = nullptr;
    QCheckBox* Check1 = nullptr;
    QCheckBox* Check2 = nullptr;
    QCheckBox* Check3 = nullptr;
    QCheckBox* Check4 = nullptr;
    QCheckBox* Check5 = nullptr;
    QCheckBox* Check6 = nullptr;  // read the disc back after a burn ("Pruefen")
    // "Titel online suchen (MusicBrainz)" on the ripping page.
    QCheckBox* CheckMusicBrainz = nullptr;
    // "Sicher rippen (AccurateRip)" on the ripping page.
    QCheckBox* CheckSecure = nullptr;
    QAction* mnuSave = nullptr;
    QProgressBar* ProgressBar1 = nullptr;
    QFrame* Picture1 = nullptr;
    QFrame* PictureUsed = nullptr;
    QFrame* PictureTotal = nullptr;
    QFrame* PictureNewValue = nullptr;
    QLabel* Label1 = nullptr;
    // 0 "Dateiname:", 1 the extension hint beside the name, 2 "Disk-Name" beside the volume name.
    std::array<QLabel*, 3> Label2{};
    QLabel* Label3 = nullptr;
    QLabel* Label4 = nullptr;
    // 0 the window's status line, 1 the disc usage beside its bar.
    std::array<QLabel*, 2> Label5{};
    QTimer* Timer1 = nullptr;
    QTimer* Timer2 = nullptr;
    QTimer* Timer6 = nullptr;

  signals:
    // The first drive list has been filled (and the first drive read).
    void DriveListFilled();

  public slots:
    void Timer1_Timer();
    void Timer2_Timer();
    void cboDrv_Click();
    void TabStrip1_Click(int index);
    void Command1_Click();
    void Command2_Click();
    void Command3_Click();
    void Command7_Click();
    void Command4_Click();
    void Command5_Click();
    void Command6_Click();
    void Timer6_Timer();
    void Command8_Click();
    void Command9_Click();
    void Command10_Click();
    void Command11_Click();
    void Command12_Click();
    void Command13_Click();
    void Command14_Click();
    void Command15_Click(int index);
    void cmdOpen_Click();
    void mnuSave_Click();
    void ComboBox2_Click(int index);
    void ComboBox3_Click(int index);
    void OptNameBurn_Click(int index);
    void Check3_Click();

  protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    // Building the window (frmMainControls.cpp).
    void CreateControls();
    void CreateRipControls();
    void CreateIsoControls();
    void CreateBurnControls();
    void CreateCommonControls();
    void LayOut();
    QHBoxLayout* DriveRow();
    QWidget* TargetBox();
    QWidget* BurnBox();
    QWidget* StatusArea();
    void ConnectHandlers();
    void PlaceBusyPicture();

    // The load, step by step (frmMain.cpp).
    void FillOutputFormats();
    void AddColumns();
    void AddTabs();
    void ApplyTabSize();
    void LoadRecentFolders();
    bool ChooseTransport();
    bool SelectDriveTransport();
    void LoadSettings();
    void LoadLanguage();
    void Form_Unload();
    void FillDriveList();
    void ShowTrackList(const std::string& handle);

    // Interface texts (frmMainLanguage.cpp).
    QString Tr(const QString& german) const;
    void FillSelectionCommands();
    void TranslateWindow();
    void TranslateControl(QWidget* control);

    // Pages (frmMainRip.cpp, frmMainIso.cpp, frmMainBurn.cpp).
    void ShowPage(int page);
    void ShowRipPage();
    void ShowIsoPage();
    void ShowBurnPage();
    void ShowNameLabels(bool shown, const QString& hint);
    void ApplySelectionCommand(int command);
    void SetRowChecked(int row, bool checked);
    int MarkedRow() const;
    void AddSourceRow();

    // The Start command (frmMainRip.cpp).
    void StartRipOrIso();
    bool AskToCheckAllRows();
    void RipAudioTracks(const std::string& prefix, const std::string& targetFolder);
    void EndStep();
    std::string SelectedDriveHandle() const;

    // The image of a folder or of the mounted data disc (frmMainIso.cpp). Answers whether the
    // Start command's end step is due.
    bool CreateIsoImageJob(const std::string& prefix, const std::string& targetFolder);
    std::string IsoSource() const;
    void ShowNoSourceMessage();
    void ShowSourceSize();
    void ShowListingTotal(const QString& total);

    // The compilation and the disc's capacity (frmMainCompilation.cpp, frmMainUsage.cpp).
    void AddCompilationRow(const std::string& path);
    void ShowCompilationButtons();
    void SaveTextOrdner(const QString& fileName);
    void LoadTextOrdner(const QString& fileName);
    void DrawDiscUsage();
    int64_t TotalSizeZusammenstellung();
    std::string BurnDriveAddress() const;
    int BarWidth() const;

    // Burning and erasing (frmMainBurn.cpp).
    authoring::IBurnService& BurnService();
    authoring::BurnHooks WindowBurnHooks();
    authoring::BurnResult RunBurn(
        const std::function<authoring::BurnResult(const authoring::BurnHooks&)>& job);

    // The CD player, the door and the tray (frmMainPlayer.cpp).
    int64_t SendCommand(const std::string& command, std::string* errorText = nullptr);
    void StopPlayer();
    void ReopenPlayer();
    int16_t TrayState();
    void UpdateTrayCaption();
    QTreeWidgetItem* RowToPlay() const;
    void ShowPlayerStatus(const QString& text, int track);

    void StartBurnJob();

    // The disc's titles: the online look-up, its status line and tooltips (frmMainTitles.cpp).
    void CreateTitleControls();
    void LoadTitleSettings();
    void SaveTitleSettings();
    void LookUpTitles(const std::string& handle, const audiocd::TrackList& list);
    void ShowTitles();
    std::optional<audiocd::DiscTitles> TitlesForRip(const std::string& handle);

    // The secure mode's box, its setting and its job (frmMainSecure.cpp).
    void CreateSecureControls();
    void LoadSecureSettings();
    void SaveSecureSettings();
    void RunSecureRip(const audiocd::RipJobParams& rip, const audiocd::JobHooks& hooks,
                      const audiocd::RowTextFn& rowText, const audiocd::EncodeFn& encoder);

    shell::SettingsPaths paths_;
    WindowOptions options_;
    shell::LanguageTexts lang_;
    std::unique_ptr<scsi::ISCSI> transport_;
    audiocd::CdAudioSharedTransport* shared_ = nullptr;  // transport_, once the player shares it
    std::unique_ptr<audiocd::CdAudio> cdAudio_;          // plays through transport_; goes first
    std::unique_ptr<audiocd::CdPlayerButtons> player_;   // Play and Stop on cdAudio_
    int playerRow_ = -1;                                 // the row showing the player's status
    std::string driveRoot_;
    authoring::FolderListing listing_;  // the ISO source, as Command7 or Start listed it
    std::unique_ptr<authoring::IBurnService> burnService_;
    int currentPage_ = kPageRip;
    bool unloaded_ = false;
    bool playing_ = false;
    // The page whose Start command's job is under way, kNoJob when none is (a close clears
    // isBusy at once, while the stopped job still unwinds).
    int jobPage_ = kNoJob;

    // The online look-up: its client (which paces the requests), the disc the track list shows
    // and the disc the titles belong to, by disc ID.
    std::unique_ptr<audiocd::MusicBrainzClient> musicBrainz_;
    audiocd::TrackList trackList_;
    std::string shownDiscId_;
    std::string titlesDiscId_;
    audiocd::TitleLookup titles_;
    bool lookingUp_ = false;
};

}  // namespace plattmix::window
