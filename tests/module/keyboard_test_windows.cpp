#include "module/homing_test.h"
#include "resources/resource_ids.h"

using namespace std::chrono_literals;
using test_support::DialogDriver;
using test_support::Eventually;
using test_support::HomingTest;
using test_support::ManualCaption;

namespace {

/// A key of the keyboard, pressed and released where the dialog has its focus.
void PressKey(const DialogDriver& dialog, WPARAM key) {
    GUITHREADINFO thread{};
    thread.cbSize = sizeof thread;
    GetGUIThreadInfo(GetWindowThreadProcessId(dialog.Window(), nullptr), &thread);
    ASSERT_NE(thread.hwndFocus, nullptr) << "the keyboard has gone";
    PostMessageW(thread.hwndFocus, WM_KEYDOWN, key, 1);
    PostMessageW(thread.hwndFocus, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

void ExpectOk(const DialogDriver& dialog, bool enabled) {
    EXPECT_TRUE(Eventually([&] { return dialog.IsEnabled(IDOK) == enabled; }));
}

TEST_F(HomingTest, ByKeyboardASecondEnterChangesNothingAndEscapeStops) {
    StartModule(0);
    OpenHome();
    const DialogDriver dialog(ManualCaption);
    SetCondition("0,0,0,1,0");
    PressKey(dialog, VK_RETURN);
    EXPECT_TRUE(Comes("@CRZMX=1\r\n"));
    ExpectOk(dialog, false);
    PressKey(dialog, VK_RETURN);
    PressKey(dialog, VK_SPACE);
    EXPECT_TRUE(StillAsks());
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{});

    SetCondition("0,0,0,2,1");
    ExpectOk(dialog, true);
    PressKey(dialog, VK_RETURN);
    EXPECT_TRUE(Comes("@CRZMY=1\r\n"));
    ExpectOk(dialog, false);
    PressKey(dialog, VK_ESCAPE);
    EXPECT_TRUE(Comes("@CRZMY=0\r\n"));
    FinishHome();
    EXPECT_FALSE(dialog.Exists());
}

}  // namespace
