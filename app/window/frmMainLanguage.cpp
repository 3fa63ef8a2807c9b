// Interface texts: the German text of every caption is the key under which the chosen language
// file holds its translation.
#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>

#include "TabStrip.h"
#include "TrackListView.h"
#include "frmMain.h"

namespace plattmix::window {

namespace {

const char* const kSelectionCommands[] = {"Alles",
                                          "Nichts",
                                          "Auswahl umkehren",
                                          "Gerade Tracks",
                                          "Ungerade Tracks",
                                          "Unterhalb der Markierung",
                                          "Oberhalb der Markierung",
                                          "Alle Selektierten"};

// Looks up text and writes the translation back through set, only when it differs.
template <typename Set>
void Translate(const frmMain& window, const QString& text, Set set,
               QString (frmMain::*tr)(const QString&) const) {
    if (text.isEmpty())
        return;
    const QString translated = (window.*tr)(text);
    if (translated != text)
        set(translated);
}

}  // namespace

QString frmMain::Tr(const QString& german) const {
    return QString::fromStdString(lang_.LangText(german.toStdString()));
}

void frmMain::FillSelectionCommands() {
    ComboBox2->clear();
    for (const char* command : kSelectionCommands)
        ComboBox2->addItem(Tr(QString::fromUtf8(command)));
    ComboBox2->setCurrentIndex(-1);
}

void frmMain::TranslateWindow() {
    setWindowTitle(Tr(windowTitle()));
    QTreeWidgetItem* header = ExplorerListView1->headerItem();
    for (int i = 0; i < header->columnCount(); ++i)
        header->setText(i, Tr(header->text(i)));
    for (int i = 0; i < TabStrip1->count(); ++i)
        TabStrip1->setTabText(i, Tr(TabStrip1->tabText(i)));
    FillSelectionCommands();
    ComboBox2->setPlaceholderText(Tr(ComboBox2->placeholderText()));
    ExplorerListView1->SetEmptyListText(Tr(ExplorerListView1->EmptyListText()));
    // Every control in turn, its caption first and then its text.
    for (QWidget* control : findChildren<QWidget*>())
        TranslateControl(control);
    for (QAction* action : findChildren<QAction*>()) {
        Translate(
            *this, action->text(), [action](const QString& t) { action->setText(t); },
            &frmMain::Tr);
    }
}

void frmMain::TranslateControl(QWidget* control) {
    if (auto* button = qobject_cast<QAbstractButton*>(control)) {
        Translate(
            *this, button->text(), [button](const QString& t) { button->setText(t); },
            &frmMain::Tr);
    } else if (auto* label = qobject_cast<QLabel*>(control)) {
        Translate(
            *this, label->text(), [label](const QString& t) { label->setText(t); }, &frmMain::Tr);
    } else if (auto* frame = qobject_cast<QGroupBox*>(control)) {
        Translate(
            *this, frame->title(), [frame](const QString& t) { frame->setTitle(t); }, &frmMain::Tr);
    } else if (auto* text = qobject_cast<QLineEdit*>(control)) {
        Translate(
            *this, text->text(), [text](const QString& t) { text->setText(t); }, &frmMain::Tr);
    }
    // Controls without a caption or a text are left as they are.
}

}  // namespace plattmix::window
