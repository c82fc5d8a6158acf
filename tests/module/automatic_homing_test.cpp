#include <random>

#include "module/homing_test.h"
#include "resources/resource_ids.h"

using namespace std::chrono_literals;
using test_support::AutoCaption;
using test_support::DialogDriver;
using test_support::Eventually;
using test_support::HomingTest;
using test_support::ManualCaption;

namespace {

const std::string HomingError = "HOMING ERROR OCCURRED!\n";
const std::string XStart = "@CRZAX\r\n";
const std::string YStart = "@CRZAY\r\n";

class AutomaticHomingTest : public HomingTest {
  protected:
    void SetUp() override { StartModule(1); }

    /// Opens the dialog and presses OK; the run is under way.
    void Begin() {
        OpenHome();
        const DialogDriver dialog(AutoCaption);
        dialog.Press(IDOK);
        FinishHome();
        EXPECT_FALSE(dialog.Exists()) << "the command returns with homing under way";
        EXPECT_TRUE(Comes(XStart));
    }
    bool Ends() {
        return Eventually([&] { return !StillAsks(); });
    }
};

TEST_F(AutomaticHomingTest, AsksOnceAndCarriesXAndYToTheirEnd) {
    OpenHome();
    const DialogDriver dialog(AutoCaption);
    EXPECT_TRUE(Eventually([&] { return dialog.Picture(IDC_HOMING_PICTURE) == IDB_COLUMN_UP; }));
    EXPECT_EQ(dialog.PictureHeight(IDC_HOMING_PICTURE), 350);
    EXPECT_EQ(dialog.Text(IDC_HOMING_TEXT),
              "\r\nMove the Z-axis column to a safe position and press OK to start stage homing."
              "\r\n\r\nPress Cancel to abort.");
    EXPECT_FALSE(StillAsks()) << "nothing is asked before OK";
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_AUTOMATIC, 0, ZBOVISK_HOMING_END_NONE));
    EXPECT_EQ(Health().homingMode, 1);
    SetCondition("7,\x80,9,1,0");
    dialog.Press(IDOK);
    FinishHome();
    EXPECT_TRUE(log.WaitFor("MyIsCncOriginRestorationCompletedX p1=55 p2=-128 p3=57 p4=49\n"));
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{XStart});
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_AUTOMATIC, 1, ZBOVISK_HOMING_END_NONE));
    SetCondition("0,0,0,25,1");
    EXPECT_TRUE(Comes(YStart));
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_AUTOMATIC, 2, ZBOVISK_HOMING_END_NONE));
    EXPECT_TRUE(log.WaitFor("MyIsCncOriginRestorationCompletedY p1=48 p2=48 p3=48 p4=50 p5=49\n"));
    SetCondition("0,0,0,2,2");
    EXPECT_TRUE(Ends());
    EXPECT_EQ(log.Text().find(HomingError), std::string::npos);
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{});
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FINISHED));
}

TEST_F(AutomaticHomingTest, CancelAndTheCloseBoxSendNothing) {
    for (const bool cancel : {true, false}) {
        OpenHome();
        const DialogDriver dialog(AutoCaption);
        if (cancel) {
            dialog.Press(IDCANCEL);
        } else {
            dialog.Close();
        }
        FinishHome();
        EXPECT_FALSE(StillAsks());
        EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_CANCELLED));
    }
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{});
}

TEST_F(AutomaticHomingTest, FailuresEndTheRunWithALogLine) {
    const struct {
        const char* condition;
        bool whileY;
    } cases[] = {
        {"0,0,0,31,0", false}, {"0,0,0", false},  {"#,E1", false}, {"", false},
        {"0,0,0,2,3", true},   {"0,0,0,2", true}, {"", true},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.condition << (test.whileY ? " while Y" : ""));
        SetCondition("0,0,0,1,1");
        TakeCommands();
        Begin();
        if (test.whileY) {
            SetCondition("0,0,0,2,0");
            EXPECT_TRUE(Comes(YStart));
        }
        log.Take();
        SetCondition(test.condition);
        EXPECT_TRUE(log.WaitFor(HomingError));
        EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FAILED));
        SetCondition("0,0,0,2,2");
        EXPECT_TRUE(Ends());
        const std::vector<std::string> commands = TakeCommands();
        EXPECT_EQ(std::count(commands.begin(), commands.end(), YStart), 0);
    }
}

TEST_F(AutomaticHomingTest, StatusBelowTwoIsWaitedFor) {
    SetCondition("0,0,0,\xFF,2");
    Begin();
    for (const char* fields : {"0,0,0,0,2", "0,0,0,-,2", "0,0,0,\x80,2"}) {
        SetCondition(fields);
        EXPECT_TRUE(StillAsks());
    }
    EXPECT_EQ(log.Text().find(HomingError), std::string::npos);
    SetCondition("0,0,0,2,2");
    EXPECT_TRUE(Comes(YStart));
    EXPECT_TRUE(Ends());
}

TEST_F(AutomaticHomingTest, SecondHomeDuringARunTakesItOver) {
    SetCondition("0,0,0,1,0");
    Begin();
    OpenHome();
    const DialogDriver again(AutoCaption);
    EXPECT_TRUE(Ends()) << "no polls while the dialog is open";
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_AUTOMATIC, 0, ZBOVISK_HOMING_CANCELLED));
    SetCondition("0,0,0,2,0");
    again.Press(IDCANCEL);
    FinishHome();
    EXPECT_FALSE(StillAsks());
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{}) << "Y is never started";
}

TEST_F(AutomaticHomingTest, ConditionOfABrokenOffRunStartsNothing) {
    SetCondition("0,0,0,1,0");
    Begin();
    SetConditionDelay(700ms);
    SetCondition("0,0,0,2,0");
    (*controller)->TakeRequestLog();
    EXPECT_TRUE(Comes("@CCND?\r\n"));
    // "X has finished" is on the line; the operator homes again and leaves.
    OpenHome();
    const DialogDriver again(AutoCaption);
    again.Press(IDCANCEL);
    FinishHome();
    EXPECT_FALSE(StillAsks());
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{});
}

TEST_F(AutomaticHomingTest, CancelIsTheLastWordAtAnyMoment) {
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> wait(0, 120);
    for (int round = 0; round < CANCEL_ROUNDS / 4; ++round) {
        SCOPED_TRACE(round);
        SetCondition("0,0,0,1,0");
        Begin();
        SetCondition("0,0,0,2,0");  // The worker is about to see X finished, and to start Y.
        test_support::Pause(std::chrono::milliseconds(wait(random)));
        OpenHome();
        const DialogDriver again(AutoCaption);
        TakeCommands();  // Y may have been started before the operator was asked again,
        if (!test_support::ClockJumps()) {  // and still be on a real line.
            ASSERT_TRUE((*controller)->WaitForRequest("@CPOSMR?\r\n", 1, 60s));
            TakeCommands();
        }
        again.Press(IDCANCEL);
        FinishHome();
        ASSERT_TRUE((*controller)->WaitForRequest("@CPOSMR?\r\n", 3, 60s));
        ASSERT_EQ(TakeCommands(), std::vector<std::string>{});
    }
}

TEST_F(AutomaticHomingTest, BothProceduresRunSideBySide) {
    SetCondition("0,0,0,1,0");
    Begin();
    Start(0);  // The next Home is manual.
    OpenHome();
    const DialogDriver manual(ManualCaption);
    EXPECT_TRUE(StillAsks()) << "the automatic run goes on";
    manual.Press(IDOK);
    EXPECT_TRUE(Comes("@CRZMX=1\r\n"));
    SetCondition("0,0,0,2,0");
    EXPECT_TRUE(Comes(YStart));
    EXPECT_TRUE(Eventually([&] { return manual.Picture(IDC_HOMING_PICTURE) == IDB_TABLE_FRONT; }));
    manual.Press(IDOK);
    EXPECT_TRUE(Comes("@CRZMY=1\r\n"));
    SetCondition("0,0,0,2,2");
    FinishHome();
    EXPECT_TRUE(Ends());
}

TEST_F(AutomaticHomingTest, HasFailedOnceNobodyFollowsIt) {
    Begin();
    Stop();
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FAILED));
}

}  // namespace
