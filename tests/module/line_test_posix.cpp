#include <map>
#include <optional>
#include <utility>

#include "module/module_test.h"
#include "native/local_port.h"

// What needs the port in memory and the clock that jumps: bytes and times to the last one.

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using test_support::Eventually;
using test_support::ModuleTest;
using test_support::Now;
using test_support::Pause;

namespace {

constexpr unsigned Port = 3;

/// A line with the controller behind it that is cut when so many more bytes have passed it, in
/// either direction.
class TornLine : public LocalPeer {
  public:
    void CutAfter(std::size_t bytes) { left_ = bytes; }
    bool IsCut() const { return left_ == 0; }
    void Mend() {
        device_.PlugCable();
        left_.reset();
    }
    simulator::Device& Controller() {
        device_.AdvanceTo(Now());
        return device_;
    }

    void Receive(std::string_view bytes, std::chrono::nanoseconds now) override {
        device_.Receive(bytes.substr(0, Pass(bytes.size())), now);
        CutIfDue();
    }
    std::string TakeDue(std::size_t most, std::chrono::nanoseconds now) override {
        arrived_ += device_.TakeDue(now);
        const std::size_t count = Pass(std::min(most, arrived_.size()));
        std::string bytes = arrived_.substr(0, count);
        arrived_.erase(0, count);
        CutIfDue();
        return bytes;
    }
    std::optional<std::chrono::nanoseconds> NextDue() override {
        return arrived_.empty() ? device_.NextDue() : std::chrono::nanoseconds(0);
    }

  private:
    std::size_t Pass(std::size_t count) {
        const std::size_t passed = std::min(count, left_.value_or(count));
        if (left_) {
            *left_ -= passed;
        }
        return passed;
    }
    void CutIfDue() {
        if (left_ == 0) {
            device_.PullCable();
            arrived_.clear();
        }
    }

    simulator::Device device_{{.bitsPerSecond = 9600}};
    std::optional<std::size_t> left_;
    std::string arrived_;
};

TEST_F(ModuleTest, LineThatIsCutAtAnyByteComesBackByItself) {
    const std::size_t whole = std::string("@CPOSMR?\r\n>CPOSMR=100000,200000,300000\r\n").size();
    TornLine line;
    std::optional<LocalPort> port(std::in_place, Port, line);
    Load("Reopen=1\nStrictReplies=1\n");
    Start();
    int round = 1000;
    for (const bool portGoes : {false, true}) {
        for (std::size_t bytes = 0; bytes <= whole; ++bytes) {
            SCOPED_TRACE(testing::Message() << bytes << (portGoes ? " port goes" : ""));
            ++round;
            line.Controller().Model().Place({round * 100.0, round * 200.0, round * 300.0});
            ASSERT_TRUE(SeesPosition(round, 2 * round, 3 * round));
            line.CutAfter(bytes);
            ASSERT_TRUE(Eventually([&] { return line.IsCut(); }));
            if (portGoes) {
                port.reset();
            }
            ++round;
            line.Controller().Model().Place({round * 100.0, round * 200.0, round * 300.0});
            Pause(1500ms);
            line.Mend();
            if (!port) {
                port.emplace(Port, line);
            }
            const auto start = Now();
            ASSERT_TRUE(SeesPosition(round, 2 * round, 3 * round));
            EXPECT_LE(Now() - start, 10s);
        }
    }
    EXPECT_GE(Health().linkLosses, whole) << "each port that goes is a loss";
    Stop();
    Pause(5s);
}

using Lines = std::map<std::string, int>;

/// How often each line stands in a text.
Lines CountLines(const std::string& text) {
    Lines lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        ++lines[text.substr(at, end - at)];
        at = end + 1;
    }
    return lines;
}

std::string Repeated(const std::string& text, int times) {
    std::string whole;
    for (; times > 0; --times) {
        whole += text;
    }
    return whole;
}

TEST_F(ModuleTest, LineWithoutTheTwoKeysIsTreatedAsEver) {
    using Piece = ScriptedReply::Piece;
    const std::string joined = ">CPOSMR=1392525,9669>CPOSMR=1408025,966929,878952";
    // By the number of the request.
    const std::map<std::size_t, ScriptedReply> faults = {
        {3, ">NO=1\r\n"},
        {4, ""},
        {5, ""},
        {6, ""},
        {9, std::vector<Piece>{{3s, ">CPOSMR=7,7,7\r\n"}}},
        {12, joined + "\r\n"},
        {15, std::vector<Piece>{{0ms, ">CPOSMR=1,2,3\r\n"}, {60ms, ">LATE=1\r\n"}}},
    };
    const std::string poll = "@CPOSMR?\r\n@SSWC?\r\n@LABR?\r\n";
    const std::string wire = "@SMOD=1\r\n@CPOSMR?\r\n" + Repeated(poll, 11) + "@LBRT1=10000\r\n" +
                             poll + "@MMVAL=+10000,+0,+0\r\n" + poll + "@MCND?\r\n" +
                             Repeated(poll, 2);
    const Lines lines = {
        {"", 97},
        {" receive=>CPOSMR=7,7,7\r", 1},
        {" receive=>LATE=1\r", 1},
        {" receive=>NO=1\r", 1},
        {">SSWC=0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0\r", 2},
        {"BADCMD COMM ERROR", 49},
        {"BADCMD1 send=@CPOSMR?\r", 1},
        {"BADCMD1 send=@SSWC?\r", 2},
        {"BADCMD2 send=@CPOSMR?\r", 16},
        {"BADCMD2 send=@LABR?\r", 15},
        {"BADCMD2 send=@MMVAL=+20000,+0,+0\r", 1},
        {"BADCMD2 send=@SSWC?\r", 15},
        {"MCND1 p0 = >MCND p1 = 0 p2 = 0 p3 = 0 p4 = 0 p5 = 1 p6 = 1 p7 = 1 p8 = 0 p9 = 0 p10 = 0 "
         "p11 = 0 p12 = 0 p13 = 0\r",
         1},
        {"MCND2 cancelled=0 x moving=0 y moving=0 z moving=0 x result=1 y result=1 z result=1 x hw "
         "limit=0 y hw limit=0 z hw limit=0 x sw limit=0 y sw limit=0 z sw limit=0",
         1},
        {"OviskCmd_Shutdown closing comms", 2},
        {"OviskCmd_Shutdown data=0", 2},
        {"OviskCmd_Shutdown finished", 2},
        {"OviskCmd_Startup data=0", 1},
        {"ZbComOpen opening: \\\\.\\COM3", 1},
        {"ZbComOpenWriteRead read failure", 4},
        {"ZbComRead TIMEEOUT!", 4},
        {"ZbComRead timeout retry", 4},
        {"ZbComWrite WriteFile Error: The device does not recognize the command.\r", 44},
    };
    for (const char* const keys : {"", "Reopen=0\nStrictReplies=0\n"}) {
        SCOPED_TRACE(keys);
        log.Take();
        test_support::SimulatedController& controller = PlugIn();
        std::size_t count = 0;
        std::string sent;
        controller->SetScript([&](const std::string& asked) -> std::optional<ScriptedReply> {
            sent += asked;
            const auto fault = faults.find(++count);
            return fault != faults.end() ? std::optional(fault->second) : std::nullopt;
        });
        Load("CmdPoll=600\nSerialLog=0\n" + std::string(keys));
        Start();
        EXPECT_TRUE(Eventually([this] { return Snapshot().cposmr.x == 13925; }));
        Pause(5s);
        EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 255));
        Pause(1s);
        EXPECT_TRUE(Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.01, 0, 0, nullptr, 0));
        Pause(2s);
        controller->With([](simulator::Device& device) { device.PullCable(); });
        Pause(3s);
        EXPECT_TRUE(Module().ZbOvisk_SetLight(2, 255));
        EXPECT_FALSE(Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.02, 0, 0, nullptr, 0));
        controller->With([](simulator::Device& device) { device.PlugCable(); });
        Pause(5s);
        Unload();
        EXPECT_EQ(sent, wire);
        EXPECT_EQ(CountLines(log.Text()), lines);
    }
}

}  // namespace
