#include <random>

#include "module/homing_test.h"
#include "resources/resource_ids.h"

using namespace std::chrono_literals;
using test_support::DialogDriver;
using test_support::Eventually;
using test_support::HomingTest;
using test_support::ManualCaption;

namespace {

/// What the operator sees in each of the four states, and what has been posted to get there.
struct Screen {
    const char* name;
    const char* text;
    bool ok;
    int picture;
    std::vector<std::string> commands;
    const char* stop;  ///< what Cancel posts
};

const Screen Screens[] = {
    {"left limit", "Press OK when at the left limit", true, IDB_TABLE_LEFT, {}, ""},
    {"X return",
     "Move the stage slowly to the right",
     false,
     IDB_TABLE_RIGHT,
     {"@CRZMX=1\r\n"},
     "@CRZMX=0\r\n"},
    {"front limit",
     "Press OK when at the front limit",
     true,
     IDB_TABLE_FRONT,
     {"@CRZMX=1\r\n"},
     ""},
    {"Y return",
     "Move the stage slowly to the back",
     false,
     IDB_TABLE_BACK,
     {"@CRZMX=1\r\n", "@CRZMY=1\r\n"},
     "@CRZMY=0\r\n"},
};

class ManualHomingTest : public HomingTest {
  protected:
    void SetUp() override { StartModule(0); }

    static void ExpectScreen(const DialogDriver& dialog, const Screen& screen) {
        SCOPED_TRACE(screen.name);
        EXPECT_TRUE(Eventually([&] {
            return dialog.Text(IDC_HOMING_TEXT) == screen.text &&
                   dialog.IsEnabled(IDOK) == screen.ok &&
                   dialog.Picture(IDC_HOMING_PICTURE) == screen.picture;
        }));
        EXPECT_EQ(dialog.Caption(), ManualCaption);
        EXPECT_TRUE(dialog.IsEnabled(IDCANCEL));
    }

    /// Leads the open dialog to the screen of this index.
    void LeadTo(const DialogDriver& dialog, int index) {
        SetCondition("0,0,0,1,0");
        ExpectScreen(dialog, Screens[0]);
        if (index >= 1) {
            dialog.Press(IDOK);
            EXPECT_TRUE(Comes("@CRZMX=1\r\n"));
            ExpectScreen(dialog, Screens[1]);
        }
        if (index >= 2) {
            SetCondition("9,9,9,2,1");
            ExpectScreen(dialog, Screens[2]);
        }
        if (index >= 3) {
            dialog.Press(IDOK);
            EXPECT_TRUE(Comes("@CRZMY=1\r\n"));
            ExpectScreen(dialog, Screens[3]);
        }
    }

    void ExpectGone(const DialogDriver& dialog) {
        FinishHome();
        EXPECT_FALSE(dialog.Exists());
        EXPECT_FALSE(StillAsks()) << "the worker goes on with a procedure that is over";
    }
};

TEST_F(ManualHomingTest, LeadsThroughXAndY) {
    OpenHome();
    const DialogDriver dialog(ManualCaption);
    RECT screen{};
    RECT place{};
    GetWindowRect(GetDesktopWindow(), &screen);
    GetWindowRect(dialog.Window(), &place);
    EXPECT_EQ(place.left, screen.right / 2 - (place.right - place.left) / 2);
    EXPECT_EQ(place.top, screen.bottom / 2 - (place.bottom - place.top) / 2);
    EXPECT_FALSE(StillAsks()) << "nothing is asked while the operator brings the stage there";
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_BY_HAND, 1, ZBOVISK_HOMING_END_NONE));
    LeadTo(dialog, 3);
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_BY_HAND, 2, ZBOVISK_HOMING_END_NONE));
    EXPECT_EQ(dialog.PictureHeight(IDC_HOMING_PICTURE), 320);
    SetCondition("0,0,0,2,25");
    FinishHome();
    EXPECT_EQ(TakeCommands(), Screens[3].commands) << "no stop after a good end";
    ExpectGone(dialog);
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FINISHED));
}

TEST_F(ManualHomingTest, CancelStopsTheAxisThatIsOnItsWayAndTheCloseBoxDoesNot) {
    for (int index = 0; index < 4; ++index) {
        for (const bool cancel : {true, false}) {
            SCOPED_TRACE(testing::Message()
                         << Screens[index].name << (cancel ? " cancel" : " close"));
            OpenHome();
            const DialogDriver dialog(ManualCaption);
            TakeCommands();
            LeadTo(dialog, index);
            EXPECT_EQ(Health().homingAxis, index < 2 ? 1 : 2);
            std::vector<std::string> expected = Screens[index].commands;
            if (cancel) {
                dialog.Press(IDCANCEL);
            } else {
                dialog.Close();
            }
            if (cancel && *Screens[index].stop != 0) {
                expected.emplace_back(Screens[index].stop);
                EXPECT_TRUE(Comes(Screens[index].stop));
            }
            FinishHome();
            EXPECT_EQ(TakeCommands(), expected);
            ExpectGone(dialog);
            EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_CANCELLED));
        }
    }
}

TEST_F(ManualHomingTest, StrayOkAndOtherConditionsChangeNothing) {
    OpenHome();
    const DialogDriver dialog(ManualCaption);
    LeadTo(dialog, 1);
    for (const char* fields :
         {"0,0,0,3,2", "0,0,2", "0,0,0", "0,0,0,12,2", "#,E1", "2,2,2,0,2", ""}) {
        SCOPED_TRACE(fields);
        SetCondition(fields);
        (*controller)->TakeRequestLog();
        EXPECT_TRUE((*controller)->WaitForRequest("@CCND?\r\n", 2, 60s)) << "it asks on";
        dialog.Press(IDOK);
        ExpectScreen(dialog, Screens[1]);
        EXPECT_EQ(TakeCommands(), std::vector<std::string>{});
    }
    SetCondition("0,,,7,,8,29,0");  // Empty fields take no position: the fourth is 29.
    ExpectScreen(dialog, Screens[2]);
    dialog.Press(IDCANCEL);
    ExpectGone(dialog);
}

TEST_F(ManualHomingTest, CancelOvertakesAStartThatStillWaits) {
    // The worker is held inside an exchange, so that start and stop meet in the queue.
    OpenHome();
    const DialogDriver dialog(ManualCaption);
    LeadTo(dialog, 1);
    SetConditionDelay(2400ms);
    (*controller)->TakeRequestLog();
    EXPECT_TRUE(Comes("@CCND?\r\n"));
    dialog.Press(IDCANCEL);
    FinishHome();
    OpenHome();
    const DialogDriver again(ManualCaption);
    again.Press(IDOK);
    again.Press(IDCANCEL);
    FinishHome();
    SetConditionDelay(0ms);
    EXPECT_TRUE(Comes("@CRZMX=0\r\n"));
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{"@CRZMX=0\r\n"}) << "one stop, no start";
}

TEST_F(ManualHomingTest, SecondHomeWhileTheDialogIsOpenReturnsAtOnce) {
    OpenHome();
    const DialogDriver dialog(ManualCaption);
    LeadTo(dialog, 1);
    EXPECT_TRUE(Module().OVISK_ZbrCmd(OviskCmd_Home, 0));
    ExpectScreen(dialog, Screens[1]);
    dialog.Press(IDCANCEL);
    ExpectGone(dialog);
}

TEST_F(ManualHomingTest, CancelWinsAgainstAConditionThatIsOnTheLine) {
    std::mt19937 random(20260101);
    std::uniform_int_distribution<int> delay(0, 30);
    for (int round = 0; round < CANCEL_ROUNDS; ++round) {
        SCOPED_TRACE(round);
        SetConditionDelay(0ms);
        SetCondition("0,0,0,1,0");
        OpenHome();
        const DialogDriver dialog(ManualCaption);
        ASSERT_TRUE(Eventually([&] { return dialog.Text(IDC_HOMING_TEXT) == Screens[0].text; }))
            << "each Home starts at the left limit";
        dialog.Press(IDOK);
        SetConditionDelay(std::chrono::milliseconds(delay(random)));
        SetCondition("0,0,0,2,2");
        test_support::Pause(std::chrono::milliseconds(2 * delay(random)));
        dialog.Press(IDCANCEL);
        FinishHome();
        ASSERT_FALSE(dialog.Exists());
        if (round % 50 == 0) {
            ASSERT_FALSE(StillAsks());
        }
    }
}

}  // namespace
