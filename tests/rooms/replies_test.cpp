#include <limits>

#include "replies/queries.h"
#include "rooms/room_test.h"

using test_support::LineTest;

namespace {

constexpr int Filler = std::numeric_limits<int>::min();

struct AxisCase {
    int value;  ///< Filler where the axis is in error
    const char* error;
};

struct PositionCase {
    const char* fields;
    bool good;
    AxisCase x, y, z;
    const char* replyError;
};

const PositionCase PositionCases[] = {
    {"100,-200,+300", true, {100, ""}, {-200, ""}, {300, ""}, ""},
    {"E1,-200,300", true, {Filler, "E1"}, {-200, ""}, {300, ""}, ""},
    {"F2,E,F", true, {Filler, "F2"}, {Filler, "E"}, {Filler, "F"}, ""},
    {"1,2,", true, {1, ""}, {2, ""}, {0, ""}, ""},
    {"1,#2,3", true, {1, ""}, {0, ""}, {3, ""}, ""},
    {"abc,2,3", true, {0, ""}, {2, ""}, {3, ""}, ""},
    {"e1,2,3", true, {0, ""}, {2, ""}, {3, ""}, ""},
    {" 7,8x,-9", true, {7, ""}, {8, ""}, {-9, ""}, ""},
    {"1,2,3,4", true, {1, ""}, {2, ""}, {3, ""}, ""},
    {"1,2,E3,4", true, {1, ""}, {2, ""}, {Filler, "E3,4"}, ""},
    {"2147483647,-2147483648,99999999999",
     true,
     {2147483647, ""},
     {Filler, ""},
     {2147483647, ""},
     ""},
    {"100,200", false, {}, {}, {}, "CMD ERROR"},
    {"100,,300", false, {}, {}, {}, "CMD ERROR"},
    {"#,E5,0", false, {}, {}, {}, "E5"},
    {"#,E5", false, {}, {}, {}, "CMD ERROR"},
    {"#", false, {}, {}, {}, "CMD ERROR"},
};

void ExpectAxis(const AxisCase& expected, int value, int error, const std::string& text) {
    EXPECT_EQ(error, *expected.error != 0 ? 1 : 0);
    EXPECT_EQ(text, expected.error);
    if (error == 0) {
        EXPECT_EQ(value, expected.value);
    }
}

TEST_F(LineTest, PositionReplies) {
    for (const PositionCase& test : PositionCases) {
        SCOPED_TRACE(test.fields);
        Answer({std::string(">CPOSMR=") + test.fields + "\r\n"});
        log.Take();
        CposmrReply record;
        EXPECT_EQ(MyQueryCposmr(record), test.good);
        EXPECT_EQ(record.replyError, test.good ? 0 : 1);
        EXPECT_EQ(record.replyErrorText, test.replyError);
        if (test.good) {
            ExpectAxis(test.x, record.x, record.xError, record.xErrorText);
            ExpectAxis(test.y, record.y, record.yError, record.yErrorText);
            ExpectAxis(test.z, record.z, record.zError, record.zErrorText);
        } else {
            EXPECT_TRUE(log.WaitFor("BADCMD buf=>CPOSMR\n"));
        }
    }
}

TEST_F(LineTest, AxesInErrorCarryARunningFiller) {
    Answer({">CPOSMR=E1,E1,E1\r\n", ">CPOSMR=E1,5,E1\r\n"});
    CposmrReply first;
    CposmrReply second;
    ASSERT_TRUE(MyQueryCposmr(first));
    ASSERT_TRUE(MyQueryCposmr(second));
    EXPECT_EQ(first.y, first.x + 1);
    EXPECT_EQ(first.z, first.x + 2);
    EXPECT_EQ(second.x, first.x + 3);
    EXPECT_EQ(second.y, 5);
}

TEST_F(LineTest, NoReplyIsACommError) {
    Answer({">OTHER=1\r\n", ">OTHER=1\r\n", ">OTHER=1\r\n"});
    CposmrReply position;
    SswcReply switches;
    LabrReply lamps;
    EXPECT_FALSE(MyQueryCposmr(position));
    EXPECT_FALSE(MyQuerySswc(switches));
    EXPECT_FALSE(MyQueryLabr(lamps));
    for (const std::string& text :
         {position.replyErrorText, switches.replyErrorText, lamps.replyErrorText}) {
        EXPECT_EQ(text, "COMM ERROR");
    }
    EXPECT_TRUE(log.WaitFor("BADCMD1 send=@LABR?\r\n receive=>OTHER=1\r\n\nBADCMD COMM ERROR\n"));
}

std::vector<int> Values(const SswcReply& r) {
    return {r.EMER_SW, r.sswc2,  r.SW_Y,   r.sswc4,   r.DATA_SW,   r.sswc6,  r.sswc7,  r.sswc8,
            r.sswc9,   r.sswc10, r.sswc11, r.FOOT_SW, r.MEAS_MODE, r.sswc14, r.sswc15, r.sswc16};
}

std::vector<int> Values(const LabrReply& r) {
    return {r.labr1, r.labr2, r.labr4, r.labr5, r.labr6, r.labr7};
}

struct ListCase {
    const char* fields;
    std::vector<int> values;  ///< empty: a bad reply
    const char* replyError;
};

class ListTest : public LineTest {
  protected:
    template <typename Record>
    void Expect(bool (*query)(Record&), const std::string& name,
                const std::vector<ListCase>& cases) {
        for (const ListCase& list : cases) {
            SCOPED_TRACE(list.fields);
            Answer({name + "=" + list.fields + "\r\n"});
            log.Take();
            Record record;
            EXPECT_EQ(query(record), !list.values.empty());
            EXPECT_EQ(record.replyErrorText, list.replyError);
            if (!list.values.empty()) {
                EXPECT_EQ(Values(record), list.values);
            } else {
                EXPECT_TRUE(log.WaitFor("BADCMD buf=" + name + "\n"));
            }
        }
    }
};

TEST_F(ListTest, SwitchReplies) {
    const std::vector<int> upTo16{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    Expect<SswcReply>(MyQuerySswc, ">SSWC",
                      {{"1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16", upTo16, ""},
                       {"1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17", upTo16, ""},
                       {"-1,#,E3,+4,,5,6,7,8,9,10,11,12,13,14,15,x",
                        {-1, 0, 0, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0},
                        ""},
                       {"1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,",
                        {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0},
                        ""},
                       {"1,2,3,4,5,6,7,8,9,10,11,12,13,14,15", {}, "CMD ERROR"},
                       {"1,2,3,4,5,6,7,,9,10,11,12,13,14,15,16", {}, "CMD ERROR"},
                       {"#,E5,3,4,5,6,7,8,9,10,11,12,13,14,15,16", {}, "E5"},
                       {"#,E5", {}, "CMD ERROR"}});
}

TEST_F(ListTest, LampReplies) {
    const std::vector<int> six{1, 2, 4, 5, 6, 7};
    Expect<LabrReply>(MyQueryLabr, ">LABR",
                      {{"1,2,3,4,5,6,7", six, ""},
                       {"1,2,3,4,5,6,7,8", six, ""},
                       {"1,2,3,4,5,6,", {1, 2, 4, 5, 6, 0}, ""},
                       {"1,2,3,4,5,6", {}, "CMD ERROR"},
                       {"1,,3,4,5,6,7", {}, "CMD ERROR"},
                       {"#,E9,3,4,5,6,7", {}, "E9"}});
}

}  // namespace
