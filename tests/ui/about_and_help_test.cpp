// The two small windows of the Help menu. Built once for each backend with a screen.

#include "tests/support/backend_driver.h"
#include "tests/support/memory_file_system.h"
#include "ui/frm_about.h"
#include "ui/frm_help.h"
#include "ui/frm_main.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

class AboutAndHelp : public testing::Test {
 protected:
    AboutAndHelp() { window.Show(); }
    ~AboutAndHelp() override { window.Close(); }
    /// Opens the window, calls `act`, and expects that this has closed it.
    void Open(MenuItem& item, const std::function<void(Window&)>& act) {
        user->WhenModalOpens([&](Window& shown) {
            act(shown);
            EXPECT_FALSE(shown.IsShown());
        });
        user->Choose(item);
        EXPECT_TRUE(window.TakesInput());
    }

    MemoryFileSystem system;
    modGlobal shared{system};
    std::unique_ptr<BackendDriver> user = MakeBackendDriver();
    frmMain window{user->Target(), shared, {"settings"}};
};

TEST_F(AboutAndHelp, TheAboutBoxShowsTheVersionAndOpensItsLinks) {
    Open(window.mnuAbout, [&](Window& shown) {
        auto& about = dynamic_cast<frmAbout&>(shown);
        EXPECT_EQ(about.lblVersion.Caption(), QUILLMERE_VERSION);
        EXPECT_EQ(about.lblBuild.Caption(), QUILLMERE_BUILD " (" QUILLMERE_BUILD_DATE ")");
        EXPECT_EQ(user->ShownOpacity(about), 1.0);
        EXPECT_EQ(user->HotSpot(about.lblHomeLink), std::pair(12, 1));
        user->Click(about.lblHomeLink);
        user->Press(about, Held::Shift, {Key::Tab});
        user->Press(about, Key::Enter);
        user->Click(about.Command1);
    });
    EXPECT_EQ(user->opened,
              (std::vector<std::string>{"https://quillmere.example/", "mailto:support@quillmere.example"}));
    for (const bool translucent : {true, false}) {
        user->Choose(window.mnuTranslucent);
        EXPECT_NEAR(user->ShownOpacity(window), translucent ? 200 / 255.0 : 1.0, 0.01);
        Open(window.mnuAbout, [&](Window& about) {
            EXPECT_EQ(user->ShownOpacity(about), user->ShownOpacity(window));
            if (translucent) user->Press(about, Key::Escape);
            if (!translucent) user->ActivateAnother();
        });
    }
}

TEST_F(AboutAndHelp, TheHelpCannotBeChangedAndItsButtonScolds) {
    window.mnuTranslucent.UserChooses();
    for (const bool escape : {true, false}) {
        Open(window.mnuHelp, [&](Window& shown) {
            auto& help = dynamic_cast<frmHelp&>(shown);
            EXPECT_EQ(user->ShownOpacity(help), 1.0) << "never translucent";
            const std::string text = help.Text1.Text();
            user->Type(help.Text1, "x");
            EXPECT_EQ(help.Text1.Text(), text);
            user->AnswerMessage(MessageResult::Ok);
            user->Click(help.cmdWtf);
            EXPECT_EQ(user->messages.back().title, "WTF?!?");
            EXPECT_EQ(user->messages.back().icon, MessageIcon::Critical);
            EXPECT_TRUE(help.IsShown());
            if (escape) user->Press(help, Key::Escape);
            if (!escape) user->Press(help, Held::Alt, {Key{'O'}});
        });
    }
}

}  // namespace
}  // namespace quillmere::test
