// Building the window: every control with its caption, tip and initial text, and the layout.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowFonts.h"
#include "frmMain.h"

namespace plattmix::window {

namespace {

constexpr int kMargin = 10;
constexpr int kSpacing = 8;

QPushButton* Button(const QString& caption, QWidget* parent, const QString& tip = QString()) {
    auto* button = new QPushButton(caption, parent);
    if (!tip.isEmpty())
        button->setToolTip(tip);
    return button;
}

QFrame* Picture(QWidget* parent) {
    auto* picture = new QFrame(parent);
    picture->setFrameShape(QFrame::NoFrame);
    picture->setAutoFillBackground(true);
    return picture;
}

QHBoxLayout* Row(QWidget* parent = nullptr) {
    auto* row = new QHBoxLayout(parent);
    row->setSpacing(kSpacing);
    if (parent != nullptr)
        row->setContentsMargins(0, 0, 0, 0);
    return row;
}

}  // namespace

void frmMain::CreateControls() {
    setWindowTitle(QStringLiteral("Plattmix"));
    setFont(WindowFont());
    setCentralWidget(new QWidget(this));
    TabStrip1 = new TabStrip(centralWidget());
    mnuSave = new QAction(QStringLiteral("Starten"), this);
    menuBar()->addAction(mnuSave);
    CreateCommonControls();
    CreateRipControls();
    CreateIsoControls();
    CreateBurnControls();
    Timer1 = new QTimer(this);
    Timer1->setInterval(100);
    Timer1->setSingleShot(true);
    Timer2 = new QTimer(this);
    Timer2->setInterval(300);
    Timer2->setSingleShot(true);
    Timer6 = new QTimer(this);
    Timer6->setInterval(1000);
    LayOut();
    ConnectHandlers();
}

void frmMain::CreateCommonControls() {
    QWidget* c = centralWidget();
    cboDrv = new QComboBox(c);
    cboDrv->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboDrv->setMinimumContentsLength(30);
    ExplorerListView1 = new TrackListView(c);
    Command1 = Button(QStringLiteral("Aktualisieren"), c);
    Command2 = Button(QStringLiteral("Abbrechen"), c);
    Command3 = Button(QStringLiteral("INI Datei starten"), c);
    Command4 = Button(QStringLiteral("Disk auswerfen"), c);
    Check1 = new QCheckBox(QStringLiteral("Nach Abschluss Dialog beenden"), c);
    ProgressBar1 = new QProgressBar(c);
    ProgressBar1->setTextVisible(false);
    ProgressBar1->setValue(0);
    Label4 = new QLabel(QStringLiteral("Fortschritt:"), c);
    Label5[0] = new QLabel(c);
    // The busy notice floats over the list while a long step runs.
    Picture1 = new QFrame(ExplorerListView1);
    Picture1->setFrameShape(QFrame::StyledPanel);
    Picture1->setAutoFillBackground(true);
    Label3 = new QLabel(QStringLiteral("Sehr zeitintensiver Vorgang, bitte unbedingt warten..."),
                        Picture1);
    auto* busy = Row(Picture1);
    busy->setContentsMargins(16, 12, 16, 12);
    busy->addWidget(Label3);
    Picture1->hide();
}

void frmMain::CreateRipControls() {
    QWidget* c = centralWidget();
    ComboBox1 = new QComboBox(c);
    ComboBox1->setEditable(true);
    ComboBox1->setInsertPolicy(QComboBox::NoInsert);
    ComboBox1->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    ComboBox2 = new QComboBox(c);
    ComboBox2->setMinimumContentsLength(22);
    ComboBox2->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    ComboBox3 = new QComboBox(c);
    ComboBox3->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    cmdOpen = Button(QStringLiteral("Ordnerauswahl..."), c);
    Command5[0] = Button(QStringLiteral("Play"), c);
    Command6 = Button(QStringLiteral("Stop"), c);
    Command5[0]->setFont(PlayerButtonFont());
    Command6->setFont(PlayerButtonFont());
    Frame1 = new QGroupBox(c);
    OptNameCounter[1] = new QRadioButton(QStringLiteral("Laufende Nummer"), Frame1);
    OptNameCounter[0] = new QRadioButton(QStringLiteral("Tracknummer"), Frame1);
    OptNameCounter[1]->setChecked(true);
    Text1 = new QLineEdit(QStringLiteral("Track"), c);
    Check2 = new QCheckBox(QStringLiteral("Nummer vor den Dateinamen setzen"), c);
    Label1 = new QLabel(QStringLiteral("Zielpfad"), c);
    Label2[0] = new QLabel(QStringLiteral("Dateiname:"), c);
    Label2[1] = new QLabel(QStringLiteral("+ .mp3"), c);
    CreateTitleControls();
    CreateSecureControls();
}

void frmMain::CreateIsoControls() {
    QWidget* c = centralWidget();
    Text2 = new QLineEdit(QStringLiteral("Ordner von dem ein ISO-Image erstellt werden soll"), c);
    Command7 = Button(QStringLiteral("Ordnerauswahl..."), c);
    OptFormat = new QRadioButton(QStringLiteral("ISO Format"), c);
    OptFormat->setAutoExclusive(false);
    Text3 = new QLineEdit(QStringLiteral("Volumenname"), c);
    Label2[2] = new QLabel(QStringLiteral("Disk-Name"), c);
    Command15[0] = Button(QStringLiteral("ISO-Datei als Laufwerk verbinden..."), c);
    Command15[1] = Button(QStringLiteral("ISO-Datei als Laufwerk trennen..."), c);
}

void frmMain::CreateBurnControls() {
    QWidget* c = centralWidget();
    OptNameBurn[0] = new QRadioButton(QStringLiteral("Daten brennen"), c);
    OptNameBurn[1] = new QRadioButton(QStringLiteral("ISO Datei brennen"), c);
    OptNameBurn[0]->setChecked(true);
    Frame2 = new QGroupBox(c);
    Command9 = Button(QStringLiteral("+ Ordner"), Frame2,
                      QStringLiteral("Fügt einen Ordner zur Zusammenstellung hinzu"));
    Command10 =
        Button(QStringLiteral("+ Datei"), Frame2,
               QStringLiteral("Fügt eine oder mehrer Datei(en) zur Zusammenstellung hinzu"));
    Command11 = Button(QStringLiteral("Neue Zusammenstellung"), Frame2,
                       QStringLiteral("Eine neue Zusammenstellung von Ordner oder Dateien"));
    Command12 = Button(QStringLiteral("Entfernen"), Frame2,
                       QStringLiteral("Entfernt einen markierten Eintrag aus der Liste oben"));
    Command13 = Button(QStringLiteral("Speichern"), Frame2,
                       QStringLiteral("Speichert die obige Zusammenstellung"));
    Command14 = Button(QStringLiteral("Laden"), Frame2,
                       QStringLiteral("Lädt eine gespeicherte Zusammenstellung"));
    // Until a compilation is started or loaded only those two buttons are offered.
    for (QPushButton* button : {Command9, Command10, Command12, Command13})
        button->hide();
    Check3 = new QCheckBox(QStringLiteral("Multisession Disk brennen"), c);
    Check4 = new QCheckBox(QStringLiteral("Disk abschließen (kein weiteres Brennen möglich)"), c);
    Check5 = new QCheckBox(QStringLiteral("Disk auswerfen"), c);
    Check6 = new QCheckBox(QStringLiteral("Disk nach dem Brennen prüfen"), c);
    Check4->setChecked(true);
    Check4->setEnabled(false);
    Command8 = Button(QStringLiteral("Disk löschen"), c);
    PictureTotal = new QFrame(c);
    PictureTotal->setFrameShape(QFrame::StyledPanel);
    PictureTotal->setFixedHeight(20);
    PictureTotal->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    PictureUsed = Picture(PictureTotal);
    PictureUsed->setBackgroundRole(QPalette::Highlight);
    PictureNewValue = Picture(PictureTotal);
    PictureNewValue->setBackgroundRole(QPalette::Link);
    PictureUsed->setGeometry(1, 1, 0, 18);
    PictureNewValue->hide();
    Label5[1] = new QLabel(c);
}

void frmMain::LayOut() {
    auto* root = new QVBoxLayout(centralWidget());
    root->setContentsMargins(kMargin, kMargin / 2, kMargin, kMargin);
    root->setSpacing(kSpacing);
    root->addWidget(TabStrip1);
    root->addLayout(DriveRow());
    auto* source = Row();
    source->addWidget(Text2, 1);
    source->addWidget(Command7);
    root->addLayout(source);
    root->addWidget(ExplorerListView1, 1);
    auto* tools = Row();
    tools->addWidget(ComboBox2);
    tools->addWidget(Frame2, 1);
    tools->addStretch();
    root->addLayout(tools);
    root->addWidget(TargetBox());
    root->addWidget(BurnBox());
    root->addWidget(StatusArea());
    resize(820, 620);
}

// A layout rather than a widget, so the row takes no room on the page that hides all of it.
QHBoxLayout* frmMain::DriveRow() {
    auto* layout = Row();
    layout->addWidget(cboDrv, 1);
    layout->addWidget(Command1);
    layout->addWidget(Command4);
    layout->addSpacing(kSpacing);
    layout->addWidget(Command5[0]);
    layout->addWidget(Command6);
    return layout;
}

QWidget* frmMain::TargetBox() {
    auto* box = new QWidget(centralWidget());
    auto* grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(kSpacing);
    grid->setVerticalSpacing(kSpacing);
    grid->addWidget(Label1, 0, 0);
    grid->addWidget(ComboBox1, 0, 1, 1, 4);
    grid->addWidget(cmdOpen, 0, 5);
    grid->addWidget(Label2[0], 1, 0);
    grid->addWidget(Text1, 1, 1);
    grid->addWidget(Label2[1], 1, 2);
    grid->addWidget(ComboBox3, 1, 3);
    grid->addWidget(OptFormat, 1, 4);
    grid->addWidget(Label2[2], 2, 0);
    grid->addWidget(Text3, 2, 1);
    auto* naming = Row(Frame1);
    naming->setContentsMargins(kSpacing, 2, kSpacing, 2);
    naming->addWidget(OptNameCounter[1]);
    naming->addWidget(OptNameCounter[0]);
    auto* options = Row();
    options->addWidget(Frame1);
    options->addWidget(Check2);
    options->addWidget(CheckMusicBrainz);
    options->addWidget(CheckSecure);
    options->addStretch();
    grid->addLayout(options, 3, 0, 1, 6);
    auto* iso = Row();
    iso->addWidget(Command15[0]);
    iso->addWidget(Command15[1]);
    iso->addStretch();
    grid->addLayout(iso, 4, 0, 1, 6);
    grid->setColumnStretch(1, 2);
    grid->setColumnStretch(4, 1);
    return box;
}

QWidget* frmMain::BurnBox() {
    auto* box = new QWidget(centralWidget());
    auto* grid = new QGridLayout(box);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(kSpacing);
    auto* compilation = Row(Frame2);
    compilation->setContentsMargins(kSpacing, 2, kSpacing, 2);
    for (QPushButton* button : {Command9, Command10, Command11, Command12, Command13, Command14})
        compilation->addWidget(button);
    grid->addWidget(OptNameBurn[0], 0, 0);
    grid->addWidget(Check3, 0, 1);
    grid->addWidget(Check5, 0, 2);
    grid->addWidget(Check6, 0, 3);
    grid->addWidget(OptNameBurn[1], 1, 0);
    grid->addWidget(Check4, 1, 1);
    grid->addWidget(Command8, 1, 2, 1, 2, Qt::AlignRight);
    auto* usage = Row();
    usage->addWidget(PictureTotal, 1);
    usage->addWidget(Label5[1]);
    grid->addLayout(usage, 2, 0, 1, 4);
    grid->setColumnStretch(1, 1);
    return box;
}

QWidget* frmMain::StatusArea() {
    auto* area = new QWidget(centralWidget());
    auto* column = new QVBoxLayout(area);
    column->setContentsMargins(0, kSpacing / 2, 0, 0);
    column->setSpacing(kSpacing);
    auto* progress = Row();
    progress->addWidget(Label4);
    progress->addWidget(ProgressBar1, 1);
    column->addLayout(progress);
    auto* buttons = Row();
    buttons->addWidget(Check1);
    buttons->addWidget(Label5[0], 1);
    buttons->addWidget(Command3);
    buttons->addWidget(Command2);
    column->addLayout(buttons);
    return area;
}

void frmMain::PlaceBusyPicture() {
    Picture1->adjustSize();
    const QRect area = ExplorerListView1->rect();
    QRect frame = Picture1->rect();
    frame.moveCenter(area.center());
    Picture1->setGeometry(frame);
}

void frmMain::ConnectHandlers() {
    connect(Timer1, &QTimer::timeout, this, &frmMain::Timer1_Timer);
    connect(Timer2, &QTimer::timeout, this, &frmMain::Timer2_Timer);
    connect(cboDrv, &QComboBox::currentIndexChanged, this, &frmMain::cboDrv_Click);
    connect(TabStrip1, &QTabBar::currentChanged, this, &frmMain::TabStrip1_Click);
    connect(Command1, &QPushButton::clicked, this, &frmMain::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &frmMain::Command2_Click);
    connect(Command3, &QPushButton::clicked, this, &frmMain::Command3_Click);
    connect(Command7, &QPushButton::clicked, this, &frmMain::Command7_Click);
    connect(Command8, &QPushButton::clicked, this, &frmMain::Command8_Click);
    connect(Command4, &QPushButton::clicked, this, &frmMain::Command4_Click);
    connect(Command15[0], &QPushButton::clicked, this, [this] { Command15_Click(0); });
    connect(Command15[1], &QPushButton::clicked, this, [this] { Command15_Click(1); });
    connect(Command5[0], &QPushButton::clicked, this, &frmMain::Command5_Click);
    connect(Command6, &QPushButton::clicked, this, &frmMain::Command6_Click);
    connect(Timer6, &QTimer::timeout, this, &frmMain::Timer6_Timer);
    connect(Command9, &QPushButton::clicked, this, &frmMain::Command9_Click);
    connect(Command10, &QPushButton::clicked, this, &frmMain::Command10_Click);
    connect(Command11, &QPushButton::clicked, this, &frmMain::Command11_Click);
    connect(Command12, &QPushButton::clicked, this, &frmMain::Command12_Click);
    connect(Command13, &QPushButton::clicked, this, &frmMain::Command13_Click);
    connect(Command14, &QPushButton::clicked, this, &frmMain::Command14_Click);
    // A double click on a compilation row toggles its check mark, as a click on the box does.
    connect(ExplorerListView1, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* row) {
        if (currentPage_ == kPageBurn && row != nullptr)
            row->setCheckState(0, row->checkState(0) == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    });
    // A compilation row's check mark changed: the total is held against the disc again.
    connect(ExplorerListView1, &QTreeWidget::itemChanged, this, [this] {
        if (currentPage_ == kPageBurn && !isLoading)
            TotalSizeZusammenstellung();
    });
    connect(cmdOpen, &QPushButton::clicked, this, &frmMain::cmdOpen_Click);
    connect(mnuSave, &QAction::triggered, this, &frmMain::mnuSave_Click);
    connect(ComboBox2, &QComboBox::activated, this, &frmMain::ComboBox2_Click);
    connect(ComboBox3, &QComboBox::currentIndexChanged, this, &frmMain::ComboBox3_Click);
    connect(OptNameBurn[0], &QRadioButton::clicked, this, [this] { OptNameBurn_Click(0); });
    connect(OptNameBurn[1], &QRadioButton::clicked, this, [this] { OptNameBurn_Click(1); });
    connect(Check3, &QCheckBox::clicked, this, &frmMain::Check3_Click);
}

}  // namespace plattmix::window
