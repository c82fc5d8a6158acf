#include "simulator/control_port.h"

#include <gtest/gtest.h>

#include <string>

#include "simulator/console.h"

namespace simulator {
namespace {

using namespace std::chrono_literals;

/// A program that talks to the port.
class Client {
  public:
    explicit Client(const ControlPort& port) : socket_(loopback::Connect(port.Number())) {}
    ~Client() { loopback::Close(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void Send(const std::string& bytes) { EXPECT_TRUE(loopback::Send(socket_, bytes)); }
    /// One line without its end, or what came before the connection ended or half a minute passed.
    std::string Line() {
        std::size_t end = 0;
        while ((end = pending_.find('\n')) == std::string::npos) {
            const bool there = !loopback::Wait({socket_}, 30s).empty();
            const auto bytes = there ? loopback::Receive(socket_) : std::nullopt;
            if (!bytes) {
                return pending_;
            }
            pending_ += *bytes;
        }
        std::string line = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        return line;
    }

  private:
    loopback::Socket socket_;
    std::string pending_;
};

TEST(ControlPort, AnswersEachLineWithOneLine) {
    Device device({.portGoesWithCable = true});
    ControlPort port(0, [&](std::string_view line) { return RunControlLine(device, line); });
    Client client(port);
    Client other(port);
    other.Send("lamp 1 ");
    // A command and the part of the status that it must have changed, or what is wrong.
    const std::pair<std::string, std::string> conversation[] = {
        {"position 1 -2 3", "position=1,-2,3;"},
        {"axis Y 50", "position=1,50,3;"},
        {"press FOOT_SW", "=0,0,0,0,0,0,0,0,0,0,0,1,0,0,0,0;"},
        {"release 12", "=0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0;"},
        {"switch MEAS_MODE 5", "=0,0,0,0,0,0,0,0,0,0,0,0,5,0,0,0;"},
        {"lamp 3 700", "lamps=0,0,0,700,0,"},
        {"axis-error Z F7", "axis-error=none,none,F7;"},
        {"origin X -9", "origin=-9,0,0;"},
        {"state homed", "home=2,2,0;"},
        {"time-factor 2.5", "time-factor=2.5;"},
        {"fault garbled=0.25", "faults=garbled:0.25;"},
        {"fault off", "faults=;"},
        {"seed 18446744073709551615", "seed=18446744073709551615;"},
        {"cable out", "cable=out;"},
        {"cable in", "cable=in;"},
        {"unplug 86400", "cable=out;"},
        {"cable in", "cable=in;"},
        {"power 0.5", "power=off;"},
        {"lamp 11 1", "error: usage: lamp N VALUE"},
        {"axis Q 1", "error: usage: axis AXIS COUNTS"},
        {"cancel now", "error: usage: cancel"},
        {"time-factor 0", "error: usage: time-factor FACTOR"},
        {"fault garbled=1.5", "error: usage: fault NAME=P"},
        {"unplug 0", "error: usage: unplug SECONDS"},
        {"unplug 1 2", "error: usage: unplug SECONDS"},
        {"unplug nan", "error: usage: unplug SECONDS"},
        {"power 86401", "error: usage: power SECONDS"},
        {"power", "error: usage: power SECONDS"},
        {"state lost", "error: usage: state NAME"},
        {"open sesame", "error: unknown command, see help"}};
    for (const auto& [command, seen] : conversation) {
        client.Send(command + "\r\nstatus\n");
        const std::string answer = client.Line();
        const std::string status = client.Line();
        if (seen.starts_with("error")) {
            EXPECT_EQ(answer, seen);
        } else {
            EXPECT_EQ(answer, "ok") << command;
            EXPECT_NE((status + ";").find(seen), std::string::npos) << command << "\n" << status;
        }
    }
    other.Send("5\n");
    EXPECT_EQ(other.Line(), "ok") << "half a line waits for its end";
    other.Send(std::string(2 * ControlPort::LongestLine, 'x'));
    EXPECT_EQ(other.Line(), "error: line too long");
    client.Send("help\n");
    EXPECT_TRUE(client.Line().starts_with("ok   position X Y Z"));
}

TEST(Away, ComesBackByItselfAtTheEndOfItsTime) {
    struct Case {
        const char* command;
        const char* answer;
        bool portGoes;
        bool forgets;
    };
    const Case cases[] = {
        {"unplug 2.5", "ok", true, false},
        {"unplug 2.5", "ok the port can't be taken away: the line is dead", false, false},
        {"power 2.5", "ok", true, true},
    };
    for (const Case& one : cases) {
        Device device({.bitsPerSecond = 0, .portGoesWithCable = one.portGoes});
        const auto ask = [&](const std::string& request, Time now) {
            device.Receive(request + "\r\n", now);
            return device.TakeDue(now);
        };
        ASSERT_EQ(RunControlLine(device, "state homed"), "ok");
        ASSERT_EQ(ask("@SMOD=1", 9s), ">SMOD=1\r\n");
        device.AdvanceTo(10s);
        EXPECT_EQ(RunControlLine(device, one.command), one.answer);
        EXPECT_EQ(ask("@SMOD?", 12'500ms - 1us), "") << one.command;
        EXPECT_EQ(ask("@SMOD?", 12'500ms), one.forgets ? ">SMOD=0\r\n" : ">SMOD=1\r\n");
        EXPECT_EQ(ask("@CCND?", 13s), one.forgets ? ">CCND=0,0,0,0,0\r\n" : ">CCND=0,0,0,2,2\r\n");
    }
}

TEST(NamedStates, ShowOnTheWire) {
    // A state, whether its positions are errors, its motion and its homing condition.
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"moving", "0,1,1,1,0,0,0,0,0,0,0,0,0", "0,0,0,0,0"},
        {"on-limit", "0,0,0,0,2,2,2,1,2,0,0,0,1", "0,0,0,0,0"},
        {"emergency", "1,0,0,0,2,2,2,0,0,0,0,0,0", "0,0,0,0,0"},
        {"homing", "0,1,1,0,0,0,0,0,0,0,0,0,0", "0,0,0,1,1"},
        {"homed", "0,0,0,0,0,0,0,0,0,0,0,0,0", "0,0,0,2,2"},
        {"home-failed", "0,0,0,0,0,0,0,0,0,0,0,0,0", "0,0,0,3,3"},
        {"axis-error", "0,0,0,0,0,0,0,0,0,0,0,0,0", "0,0,0,0,0"},
        {"unhomed", "0,0,0,0,0,0,0,0,0,0,0,0,0", "0,0,0,0,0"}};
    // One device for all: nothing of a state may be left in the next.
    Device device;
    for (const auto& [name, motion, homing] : cases) {
        ASSERT_EQ(RunControlLine(device, "state " + name), "ok");
        EXPECT_EQ(device.Wire().Answer("@MCND?"), ">MCND=" + motion + "\r\n") << name;
        EXPECT_EQ(device.Wire().Answer("@CCND?"), ">CCND=" + homing + "\r\n") << name;
        const std::string position = device.Wire().Answer("@CPOSMR?");
        EXPECT_EQ(position == ">CPOSMR=E1,F2,E3\r\n", name == "axis-error") << position;
        EXPECT_EQ(device.Model().Switch(EmergencySwitch), name == "emergency" ? 1 : 0);
    }
}

TEST(TimeFactor, HoldsForTheStageAndNotForTheLine) {
    Device device({.bitsPerSecond = 0, .latency = 20ms});
    device.AdvanceTo(1s);
    device.SetTimeFactor(100);
    device.Receive("@MMVAL=1000000,0,0\r\n", 1s);
    EXPECT_EQ(device.NextDue(), Time(1020ms));
    device.AdvanceTo(1022ms);
    EXPECT_TRUE(device.Model().Commanded()) << "2.2 of 2.25 seconds";
    device.AdvanceTo(1023ms);
    EXPECT_EQ(device.Model().At(AxisName::X).Counts(), 1'000'000);
    EXPECT_FALSE(device.Model().Commanded());
}

}  // namespace
}  // namespace simulator
