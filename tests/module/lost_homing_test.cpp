#include <atomic>

#include "module/reopen_test.h"
#include "resources/resource_ids.h"

// What becomes of a homing when the line is lost.

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using test_support::AutoCaption;
using test_support::DialogDriver;
using test_support::Eventually;
using test_support::ManualCaption;
using test_support::ReopenSettings;
using test_support::ReopenTest;
using test_support::WrongReply;

namespace {

/// A homing in one of its states.
struct Progress {
    const char* name;
    bool automatic;
    int presses;       ///< of OK
    bool xIsFinished;  ///< the axis that follows is reached
};

void PrintTo(const Progress& stage, std::ostream* out) {
    *out << stage.name;
}

const Progress Stages[] = {
    {"left limit", false, 0, false},  {"X return by hand", false, 1, false},
    {"front limit", false, 1, true},  {"Y return by hand", false, 2, true},
    {"confirmation", true, 0, false}, {"X return", true, 1, false},
    {"Y return", true, 1, true},
};

class HomingOnALostLine : public ReopenTest, public testing::WithParamInterface<Progress> {
  protected:
    /// Brings the dialog that is open to the state.
    void LeadTo(const DialogDriver& dialog, const Progress& stage) {
        SetCondition("0,0,0,1,0");
        if (stage.presses >= 1) {
            dialog.Press(IDOK);
            ASSERT_TRUE(Comes(stage.automatic ? "@CRZAX\r\n" : "@CRZMX=1\r\n"));
        }
        if (stage.xIsFinished) {
            SetCondition("0,0,0,2,1");
            ASSERT_TRUE(stage.automatic ? Comes("@CRZAY\r\n") : Eventually([&] {
                return dialog.IsEnabled(IDOK) &&
                       dialog.Picture(IDC_HOMING_PICTURE) == IDB_TABLE_FRONT;
            }));
        }
        if (stage.presses >= 2) {
            dialog.Press(IDOK);
            ASSERT_TRUE(Comes("@CRZMY=1\r\n"));
        }
    }
    const std::string& Caption() { return GetParam().automatic ? AutoCaption : ManualCaption; }
};

TEST_P(HomingOnALostLine, EndsAsFailedAndStartsNothingLate) {
    StartOnLine(ReopenSettings, GetParam().automatic ? 1 : 0);
    OpenHome();
    const DialogDriver dialog(Caption());
    LeadTo(dialog, GetParam());
    EXPECT_TRUE(IsTold(GetParam().automatic ? ZBOVISK_HOMING_AUTOMATIC : ZBOVISK_HOMING_BY_HAND,
                       GetParam().automatic ? GetParam().presses + (GetParam().xIsFinished ? 1 : 0)
                                            : 1 + (GetParam().xIsFinished ? 1 : 0),
                       ZBOVISK_HOMING_END_NONE));
    LoseLine();
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FAILED));
    FinishHome();
    EXPECT_FALSE(dialog.Exists());

    OpenHome();
    const DialogDriver again(Caption());
    EXPECT_TRUE(IsTold(GetParam().automatic ? ZBOVISK_HOMING_AUTOMATIC : ZBOVISK_HOMING_BY_HAND,
                       GetParam().automatic ? 0 : 1, ZBOVISK_HOMING_FAILED));
    again.Press(IDOK);
    FinishHome();
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FAILED));
    PlugCable();
    ExpectReturn();
    ASSERT_TRUE(Line()->WaitForRequest("@LABR?\r\n", 2, 60s));
    EXPECT_EQ(TakeCommands(), std::vector<std::string>{});
    EXPECT_FALSE(StillAsks());

    OpenHome();
    const DialogDriver last(Caption());
    LeadTo(last, {"whole", GetParam().automatic, GetParam().automatic ? 1 : 2, true});
    SetCondition("0,0,0,2,2");
    FinishHome();
    EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FINISHED));
}

INSTANTIATE_TEST_SUITE_P(Reopen, HomingOnALostLine, testing::ValuesIn(Stages));

TEST_F(ReopenTest, HomingStartThatWaitsAsTheLineIsLostIsNotSentLate) {
    for (const bool automatic : {false, true}) {
        SCOPED_TRACE(automatic);
        StartOnLine(ReopenSettings, automatic ? 1 : 0);
        OpenHome();
        const DialogDriver dialog(automatic ? AutoCaption : ManualCaption);
        // The third failure is a silence: for 2.65 s the worker is inside its exchange.
        std::atomic<int> asked{0};
        Line()->SetScript([&asked](const std::string&) -> std::optional<ScriptedReply> {
            return ++asked < 3 ? ScriptedReply(WrongReply) : ScriptedReply("");
        });
        ASSERT_TRUE(Eventually([&] { return asked == 3; }));
        Line()->TakeRequestLog();
        dialog.PressAndWait(IDOK);
        FinishHome();
        EXPECT_TRUE(IsTold(ZBOVISK_HOMING_NONE, 0, ZBOVISK_HOMING_FAILED));
        Answer({});
        ExpectReturn();
        ASSERT_TRUE(Line()->WaitForRequest("@LABR?\r\n", 2, 60s));
        EXPECT_EQ(TakeCommands(), std::vector<std::string>{});
        EXPECT_FALSE(StillAsks());
        Unload();
        log.Take();
    }
}

}  // namespace
