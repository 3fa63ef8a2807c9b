// The burning page's capacity display: how full the disc in the chosen drive is (the used bar)
// and what the compilation would add (the bar after it), with their status texts.
#include <QFrame>
#include <QLabel>
#include <algorithm>

#include "BlockNode.h"
#include "DiscProfile.h"
#include "DiscUsage.h"
#include "TrackListView.h"
#include "frmMain.h"

namespace plattmix::window {

namespace {

constexpr int kBytesColumn = 2;
constexpr int kBarInset = 1;  // the bars sit inside PictureTotal's frame

QString Q(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

// The drive node libburn takes for the chosen drive; drives made from disc images cannot be
// written.
std::string frmMain::BurnDriveAddress() const {
    // libburn takes the drive's block node; a fall-back drive without one by its generic node.
    const std::string handle = SelectedDriveHandle();
    if (!transport_ || handle.empty())
        return {};
    const std::string node = scsi::BlockNodeOf(*transport_, handle);
    if (!node.empty())
        return node;
    return transport_->Interface() == "ASPI" ? "/dev/" + transport_->DriveChar(handle)
                                             : std::string();
}

int frmMain::BarWidth() const {
    return std::max(0, PictureTotal->width() - 2 * kBarInset);
}

void frmMain::DrawDiscUsage() {
    if (currentPage_ != kPageBurn || DiskBusy)
        return;
    PlaceBusyPicture();
    Picture1->show();
    Picture1->repaint();
    if (!burnService_)
        burnService_ =
            options_.burnService ? options_.burnService() : authoring::MakeLibburnService();
    DiskBusy = true;
    const authoring::DiskInfo info = authoring::GetDiskInfo(*burnService_, BurnDriveAddress());
    DiskBusy = false;
    // Which kind of disc it is, when the user points at the bar.
    PictureTotal->setToolTip(Q(authoring::ProfileName(BurnService().LastProfile())));
    const auto tr = [this](const std::string& german) { return Tr(Q(german)).toStdString(); };
    const auto view = authoring::ShowDiskUsage(info, BarWidth(), tr);
    DiskCapacity = view.DiskCapacity;
    DiskUsed = view.DiskUsed;
    PictureTotal->setVisible(view.barsShown);
    PictureUsed->setVisible(view.barsShown);
    if (!view.barsShown)
        PictureNewValue->hide();
    PictureUsed->setGeometry(kBarInset, kBarInset, view.usedWidth,
                             PictureTotal->height() - 2 * kBarInset);
    Label4->setText(Q(view.label4));
    if (!view.label5.empty())
        Label5[1]->setText(Q(view.label5));
    Picture1->hide();
}

int64_t frmMain::TotalSizeZusammenstellung() {
    int64_t sum = 0;
    for (int row = 0; row < ExplorerListView1->topLevelItemCount(); ++row)
        sum += ExplorerListView1->topLevelItem(row)->text(kBytesColumn).toLongLong();
    const auto tr = [this](const std::string& german) { return Tr(Q(german)).toStdString(); };
    const int usedWidth = !PictureUsed->isHidden() ? PictureUsed->width() : 0;
    const auto view = authoring::TotalSizeZusammenstellung(sum, DiskCapacity, DiskUsed, BarWidth(),
                                                           usedWidth, tr);
    Label5[1]->setText(Q(view.label5));
    Label4->setText(Q(view.label4));
    PictureNewValue->setVisible(view.newShown);
    PictureNewValue->setGeometry(kBarInset + usedWidth, kBarInset, view.newWidth,
                                 PictureTotal->height() - 2 * kBarInset);
    return view.sum;
}

}  // namespace plattmix::window
