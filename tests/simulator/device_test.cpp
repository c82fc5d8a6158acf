#include "simulator/device.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace simulator {
namespace {

using namespace std::chrono_literals;

constexpr const char* Origin = ">CPOSMR=0,0,0\r\n";
const DeviceSettings Unpaced{.bitsPerSecond = 0};

TEST(Device, AnswersEachRequestOnceHoweverItArrives) {
    struct Case {
        std::vector<std::string> pieces;
        std::string replies;
        std::vector<std::string> log;
    };
    const std::string query = "@CPOSMR?\r\n";
    const std::string lamp = ">LBRT1=0\r\n";
    // Between two pieces the line is quiet for 20 ms.
    const Case cases[] = {
        {{query}, Origin, {query}},
        {{query + query}, std::string(Origin) + Origin, {query, query}},
        {{"@CPO", "SMR?\r\n"}, Origin, {query}},
        {{"@LBRT1?"}, lamp, {"@LBRT1?"}},
        {{"@LBRT1?", "\r\n", query}, lamp + Origin, {"@LBRT1?", query}},
        {{"@LBRT1?" + query}, lamp + Origin, {"@LBRT1?", query}},
        {{"\r\n", "\n", query}, Origin, {query}},
        // The rest of a broken request does not spoil the next one.
        {{"@CPOS" + query}, Origin, {query}},
        {{std::string(1000, 'x'), query}, Origin, {query}},
        {{"@" + std::string(1000, '?') + "\r\n" + query}, Origin, {query}},
        {{"@CPOSMR?\n"}, ">=#,E1\r\n", {"@CPOSMR?\n"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pieces.front());
        Device device(Unpaced);
        std::string replies;
        Time now{0};
        for (const std::string& piece : c.pieces) {
            device.Receive(piece, now);
            replies += device.TakeDue(now += 20ms);
        }
        EXPECT_EQ(replies, c.replies);
        EXPECT_EQ(std::vector(device.Requests().begin(), device.Requests().end()), c.log);
        EXPECT_EQ(device.NextDue(), std::nullopt);
    }
}

TEST(Device, WaitsForTheLineEndWhileTheLineIsNotQuiet) {
    Device device(Unpaced);
    device.Receive("@CPOSMR?", 0ms);
    EXPECT_EQ(device.NextDue(), Time(5ms));
    EXPECT_EQ(device.TakeDue(4ms), "");
    device.Receive("\r\n", 4ms);
    EXPECT_EQ(device.TakeDue(4ms), Origin);
    EXPECT_EQ(device.TakeDue(1s), "");
}

TEST(Device, PacesRepliesAtTheSpeedOfTheLine) {
    // A byte takes 1 ms.
    Device device({.bitsPerSecond = 10'000, .latency = 7ms});
    device.Receive("@CPOSMR?\r\n", 100ms);
    EXPECT_EQ(device.TakeDue(107ms), "");
    EXPECT_EQ(device.NextDue(), Time(108ms));
    EXPECT_EQ(device.TakeDue(108ms), ">");
    EXPECT_EQ(device.TakeDue(115ms), "CPOSMR=");
    // The second reply has to wait until the first has left the line.
    device.Receive("@SMOD=1\r\n", 110ms);
    EXPECT_EQ(device.TakeDue(122ms), "0,0,0\r\n");
    EXPECT_EQ(device.TakeDue(131ms), ">SMOD=1\r\n");
    EXPECT_EQ(device.NextDue(), std::nullopt);
}

TEST(Device, ScriptTakesThePlaceOfTheStage) {
    Device device(Unpaced);
    device.SetScript([](const std::string& request) -> std::optional<ScriptedReply> {
        if (request == "@MCND?\r\n") {
            return "";
        }
        if (request == "@SMOD=1\r\n") {
            return std::vector<ScriptedReply::Piece>{{10ms, ">SMOD"}, {30ms, "=1\r\n"}};
        }
        return std::nullopt;
    });
    device.Receive("@MCND?\r\n@SMOD=1\r\n", 0ms);
    EXPECT_EQ(device.TakeDue(9ms), "");
    EXPECT_EQ(device.TakeDue(39ms), ">SMOD");
    EXPECT_EQ(device.TakeDue(40ms), "=1\r\n");
    EXPECT_FALSE(device.Model().Remote());
    device.Receive("@CPOSMR?\r\n", 50ms);
    EXPECT_EQ(device.TakeDue(50ms), Origin);
}

TEST(Device, StageMovesOnBetweenRequests) {
    Device device(Unpaced);
    device.Receive("@MMVAL=+1000,+0,+0\r\n@MCND?\r\n", 0ms);
    EXPECT_EQ(device.TakeDue(0ms), ">MMVAL=0\r\n>MCND=0,1,0,0,0,1,1,0,0,0,0,0,0\r\n");
    device.Receive("@MCND?\r\n@CPOSMR?\r\n", 1s);
    EXPECT_EQ(device.TakeDue(1s), ">MCND=0,0,0,0,1,1,1,0,0,0,0,0,0\r\n>CPOSMR=1000,0,0\r\n");
}

}  // namespace
}  // namespace simulator
