#include "simulator/device.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace simulator {
namespace {

using namespace std::chrono_literals;

TEST(Device, AnswersEachRequestOnceHoweverItArrives) {
    const std::string query = "@CPOSMR?\r\n";
    const std::string origin = ">CPOSMR=0,0,0\r\n";
    const std::string lamp = ">LBRT1=0\r\n";
    // Between two pieces the line is quiet for 20 ms. The rest of a broken request does not spoil
    // the next one.
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{query + query}, origin + origin},
        {{"@CPO", "SMR?\r\n"}, origin},
        {{"@LBRT1?", "\r\n", query}, lamp + origin},
        {{"@LBRT1?" + query}, lamp + origin},
        {{"\r\n", "\n", query}, origin},
        {{"@CPOS" + query}, origin},
        {{std::string(1000, 'x'), query}, origin},
        {{"@" + std::string(1000, '?') + "\r\n" + query}, origin}};
    for (const auto& [pieces, replies] : cases) {
        Device device({.bitsPerSecond = 0});
        std::string seen;
        Time now{0};
        for (const std::string& piece : pieces) {
            device.Receive(piece, now);
            seen += device.TakeDue(now += 20ms);
        }
        EXPECT_EQ(seen, replies) << pieces.front();
    }
}

TEST(Protocol, AnswersEveryRequestInItsForm) {
    StageModel model;
    Protocol protocol(model);
    model.Place({100, -200, 300});
    model.SetSwitch(MeasMode, 7);
    // In this order: later rows see what earlier rows set.
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {">CPOSMR=100,-200,300", {"@CPOSMR?"}},
        {">SSWC=0,0,0,0,0,0,0,0,0,0,0,0,7,0,0,0", {"@SSWC?"}},
        {">MMVAL=0", {"@MMVAL=+1000,-200,+0"}},
        {">MCND=0,1,0,1,0,1,0,0,0,0,0,0,0", {"@MCND?"}},
        {">LBRT1=10000", {"@LBRT1=10000"}},
        {">LBRT7=5020", {"@LBRT7=5020", "@LBRT7?"}},
        {">LABR=10000,0,0,0,0,0,5020", {"@LABR?"}},
        {">CRZMX=#,E3", {"@CRZMX=1"}},
        {">CRZMY=1", {"@CRZMY=1"}},
        {">CRZMY=0", {"@CRZMY=0"}},
        {">CRZAY=0", {"@CRZAY"}},
        {">CCND=0,0,0,0,1", {"@CCND?"}},
        {">MMVAL=#,E3", {"@MMVAL=1,2,3"}},
        {">SMOD=#,E2", {"@SMOD=2", "@SMOD="}},
        {">MMVAL=#,E2", {"@MMVAL=1,2", "@MMVAL=1,2,3,4", "@MMVAL=1,,3", "@MMVAL=1,2,2147483648"}},
        {">LBRT1=#,E2", {"@LBRT1=10001", "@LBRT1=-1", "@LBRT1="}},
        {">LBRT11=#,E1", {"@LBRT11=5", "@LBRT11?"}},
        {">WHAT=#,E1", {"@WHAT?"}},
        {">=#,E1", {"@CPOSMR??", "@cposmr?", "CPOSMR?", "@", "@CPOSMR?\n", "@\xff\x80?"}},
        {">=#,E1", {std::string("@SS\0C?", 6)}}};
    for (const auto& [reply, requests] : cases) {
        for (const std::string& request : requests) {
            EXPECT_EQ(protocol.Answer(request), reply + "\r\n") << request;
        }
    }
}

TEST(Protocol, ShowsAxisErrorsAndRefusesOnDemand) {
    StageModel model;
    Protocol protocol(model);
    model.At(AxisName::Y).Settings().error = "F2";
    EXPECT_EQ(protocol.Answer("@CPOSMR?"), ">CPOSMR=0,F2,0\r\n");
    protocol.Refuse("CPOSMR", "E5");
    protocol.Refuse("MMVAL", "E7");
    EXPECT_EQ(protocol.Answer("@CPOSMR?"), ">CPOSMR=#,E5\r\n");
    EXPECT_EQ(protocol.Answer("@MMVAL=1,2,3"), ">MMVAL=#,E7\r\n");
    EXPECT_FALSE(model.Commanded());
    protocol.FillRefusals(true);
    EXPECT_EQ(protocol.Answer("@CPOSMR?"), ">CPOSMR=#,E5,0\r\n");
}

}  // namespace
}  // namespace simulator
