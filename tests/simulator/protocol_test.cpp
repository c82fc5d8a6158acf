#include "simulator/protocol.h"

#include <gtest/gtest.h>

#include <string>

namespace simulator {
namespace {

struct Exchange {
    std::string request;
    std::string reply;
};

TEST(Protocol, AnswersEveryRequestInItsForm) {
    StageModel model;
    Protocol protocol(model);
    model.Place({100, -200, 300});
    model.SetSwitch(FootSwitch, 1);
    model.SetSwitch(MeasMode, 7);
    // In this order: later rows see what earlier rows set.
    const Exchange cases[] = {
        {"@SMOD?", ">SMOD=0"},
        {"@SMOD=1", ">SMOD=1"},
        {"@SMOD?", ">SMOD=1"},
        {"@SMOD=2", ">SMOD=#,E2"},
        {"@CPOSMR?", ">CPOSMR=100,-200,300"},
        {"@SSWC?", ">SSWC=0,0,0,0,0,0,0,0,0,0,0,1,7,0,0,0"},
        {"@MCND?", ">MCND=0,0,0,0,0,0,0,0,0,0,0,0,0"},
        {"@MMVAL=+100,-200,+300", ">MMVAL=0"},
        {"@MCND?", ">MCND=0,0,0,0,1,1,1,0,0,0,0,0,0"},
        {"@MMVAL=+1000,-200,+0", ">MMVAL=0"},
        {"@MCND?", ">MCND=0,1,0,1,0,1,0,0,0,0,0,0,0"},
        {"@MMVAL=1,2", ">MMVAL=#,E2"},
        {"@MMVAL=1,2,3,4", ">MMVAL=#,E2"},
        {"@MMVAL=1,,3", ">MMVAL=#,E2"},
        {"@MMVAL=1,2,2147483648", ">MMVAL=#,E2"},
        {"@MMVAL=+-1,2,3", ">MMVAL=#,E2"},
        {"@LBRT0=1", ">LBRT0=1"},
        {"@LBRT1=10000", ">LBRT1=10000"},
        {"@LBRT7=5020", ">LBRT7=5020"},
        {"@LBRT10=39", ">LBRT10=39"},
        {"@LBRT7?", ">LBRT7=5020"},
        {"@LBRT1=10001", ">LBRT1=#,E2"},
        {"@LBRT1=-1", ">LBRT1=#,E2"},
        {"@LBRT1=", ">LBRT1=#,E2"},
        {"@LBRT11=5", ">LBRT11=#,E1"},
        {"@LBRT01=5", ">LBRT01=#,E1"},
        {"@LBRT=5", ">LBRT=#,E1"},
        {"@LABR?", ">LABR=10000,0,0,0,0,0,5020"},
        {"@CCND?", ">CCND=0,0,0,0,0"},
        {"@CRZMY=1", ">CRZMY=1"},
        {"@CCND?", ">CCND=0,0,0,0,1"},
        {"@CRZMY=0", ">CRZMY=0"},
        {"@CRZAY", ">CRZAY=0"},
        {"@CRZMX=3", ">CRZMX=#,E2"},
        {"@CCND?", ">CCND=0,0,0,0,1"},
        {"@CRZAX?", ">CRZAX=#,E1"},
        {"@CPOSMR", ">CPOSMR=#,E1"},
        {"@WHAT?", ">WHAT=#,E1"},
        {"@CPOSMR??", ">=#,E1"},
        {"@cposmr?", ">=#,E1"},
        {"CPOSMR?", ">=#,E1"},
        {"@", ">=#,E1"},
        {"@CPOSMR?\n", ">=#,E1"},
        {std::string("@SS\0C?", 6), ">=#,E1"},
        {"@\xff\x80?", ">=#,E1"},
    };
    for (const Exchange& exchange : cases) {
        EXPECT_EQ(protocol.Answer(exchange.request), exchange.reply + "\r\n") << exchange.request;
    }
}

TEST(Protocol, AxisErrorStandsInThePlaceOfThePosition) {
    StageModel model;
    Protocol protocol(model);
    model.Place({1, 2, 3});
    model.At(AxisName::Y).Settings().error = "F2";
    EXPECT_EQ(protocol.Answer("@CPOSMR?"), ">CPOSMR=1,F2,3\r\n");
}

TEST(Protocol, RefusesOnDemand) {
    StageModel model;
    Protocol protocol(model);
    protocol.Refuse("CPOSMR", "E5");
    protocol.Refuse("MMVAL", "E7");
    EXPECT_EQ(protocol.Answer("@CPOSMR?"), ">CPOSMR=#,E5\r\n");
    EXPECT_EQ(protocol.Answer("@MMVAL=1,2,3"), ">MMVAL=#,E7\r\n");
    EXPECT_FALSE(model.Commanded());
    protocol.FillRefusals(true);
    EXPECT_EQ(protocol.Answer("@CPOSMR?"), ">CPOSMR=#,E5,0\r\n");
    protocol.Accept("CPOSMR");
    EXPECT_EQ(protocol.Answer("@CPOSMR?"), ">CPOSMR=0,0,0\r\n");
}

}  // namespace
}  // namespace simulator
