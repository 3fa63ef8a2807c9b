// The controls each page of the tab strip shows, and the burning page's own rules.
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "TabStrip.h"
#include "TrackListView.h"
#include "WindowTestSupport.h"

using namespace plattmix::window;
using namespace plattmix::window::test;

TEST_F(WindowTest, EachPageShowsItsOwnControls) {
    frmMain* window = StartShownWith("AudioThreeTracks");
    ASSERT_NE(window, nullptr);
    // Per page (ripping, image, burning): '+' shown, '.' hidden.
    const std::pair<QWidget*, const char*> controls[] = {
        {window->cboDrv, "+.+"},    {window->Command5[0], "+.."},    {window->ComboBox3, "+.."},
        {window->Text1, "++."},     {window->ComboBox2, "++."},      {window->Text2, ".+."},
        {window->OptFormat, ".+."}, {window->Command15[0], ".+."},   {window->Text3, "..+"},
        {window->Frame2, "..+"},    {window->Check5, "..+"},         {window->CheckSecure, "+.."},
        {window->Check6, "..+"},    {window->OptNameBurn[1], "..+"},
    };
    const char* const extensions[] = {"+ .mp3", "+ .iso", nullptr};
    // The way back to the ripping page must bring its controls back too.
    for (const int page : {kPageRip, kPageIso, kPageBurn, kPageRip}) {
        window->TabStrip1->setCurrentIndex(page);
        for (size_t i = 0; i < std::size(controls); ++i) {
            EXPECT_EQ(controls[i].first->isVisible(), controls[i].second[page] == '+')
                << "page " << page << ", control #" << i;
        }
        if (extensions[page] != nullptr) {
            EXPECT_EQ(window->Label2[1]->text(), QString::fromUtf8(extensions[page]));
        }
    }

    // Burning an ISO file has no compilation; without multisession the disc is always closed.
    window->TabStrip1->setCurrentIndex(kPageBurn);
    window->OptNameBurn[1]->click();
    EXPECT_TRUE(window->cmdOpen->isEnabled());
    EXPECT_FALSE(window->Check3->isVisible() || window->Command11->isVisible());
    window->OptNameBurn[0]->click();
    EXPECT_FALSE(window->cmdOpen->isEnabled());
    for (bool multisession : {false, true, false}) {
        EXPECT_EQ(window->Check4->isChecked(), !multisession);
        EXPECT_EQ(window->Check4->isEnabled(), multisession);
        window->Check3->click();
    }
    EXPECT_TRUE(boxes.boxes.empty());  // nothing unsaved on the burning page
}
