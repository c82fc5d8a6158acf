#include "simulator/faults.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/device.h"

namespace simulator {
namespace {

using namespace std::chrono_literals;

/// What a device sends, and when each piece starts, until it has nothing more to send.
struct Sent {
    std::string bytes;
    std::vector<Time> times;
};

Sent Ask(Device& device, const std::string& request, Time now) {
    Sent sent;
    device.Receive(request, now);
    for (auto due = device.NextDue(); due; due = device.NextDue()) {
        const std::string bytes = device.TakeDue(*due);
        sent.bytes += bytes;
        if (!bytes.empty()) {
            sent.times.push_back(*due);
        }
    }
    return sent;
}

struct Row {
    Fault fault;
    std::string request;
    std::string bytes;
    /// How long after the request the first piece comes, and how many pieces there are.
    Time earliest{0};
    Time latest{0};
    std::size_t pieces = 1;
};

TEST(Faults, EachChangesTheReplyInItsWay) {
    const std::string lamp = "@LBRT1=500\r\n";
    const std::string plain = ">LBRT1=500\r\n";
    const std::string position = "@CPOSMR?\r\n";
    // Where a byte changes is up to the seed, the same on every machine.
    const Row rows[] = {
        {Fault::Silence, lamp, "", 0s, 0s, 0},
        {Fault::Dropped, lamp, "", 0s, 0s, 0},
        {Fault::Delay, lamp, plain, 50ms, 1000ms},
        {Fault::Late, lamp, plain, 3000ms, 3000ms},
        {Fault::Split, lamp, plain, 0s, 0s, 2},
        {Fault::Doubled, lamp, plain + plain},
        {Fault::DroppedByte, lamp, ">LBRT1=500\r"},
        {Fault::DoubledByte, lamp, ">LBRT1=5000\r\n"},
        {Fault::Garbled, lamp,
         ">LBRT1z\xD3\x91"
         "0\r\n"},
        {Fault::Nul, lamp,
         std::string(">LBRT1=5\0"
                     "00\r\n",
                     13)},
        {Fault::MissingCr, lamp, ">LBRT1=500\n"},
        {Fault::MissingLf, lamp, ">LBRT1=500\r"},
        {Fault::Oversize, lamp, ">LBRT1=500" + std::string(1000, '0') + "\r\n"},
        {Fault::Refusal, lamp, ">LBRT1=#,E3\r\n"},
        {Fault::AxisError, position, ">CPOSMR=7,8,E8\r\n"},
        {Fault::AxisError, lamp, plain},
        {Fault::Cable, lamp, "", 0s, 0s, 0},
        {Fault::Reset, position, "", 0s, 0s, 0},
        {Fault::Reset, "@MMVAL=1,2,3\r\n", ">MMVAL=0\r\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(FaultTexts[static_cast<std::size_t>(row.fault)].name);
        Device device({.bitsPerSecond = 0});
        device.Model().Place({7, 8, 9});
        if (row.fault == Fault::Reset && row.bytes.empty()) {
            device.AdvanceTo(10s);
            device.Model().MoveTo({100'000, 0, 0});
        }
        device.FaultsOfLine().Set(row.fault, 1);
        const Sent sent = Ask(device, row.request, 10s);
        EXPECT_EQ(sent.bytes, row.bytes);
        EXPECT_EQ(sent.times.size(), row.pieces);
        if (!sent.times.empty()) {
            EXPECT_GE(sent.times.front(), 10s + row.earliest);
            EXPECT_LE(sent.times.front(), 10s + row.latest);
        }
        const bool unheard = row.fault == Fault::Silence || row.fault == Fault::Refusal ||
                             row.fault == Fault::Cable || row.request != lamp;
        EXPECT_EQ(device.Model().Lamp(1), unheard ? 0 : 500);
        device.FaultsOfLine().SwitchAllOff();
        EXPECT_EQ(Ask(device, "@SMOD?\r\n", 20s).bytes, ">SMOD=0\r\n") << "it has recovered";
    }
}

TEST(Faults, ResetAndCableMakeTheControllerDeafForATime) {
    for (const auto& [fault, back] : {std::pair(Fault::Reset, 1s), std::pair(Fault::Cable, 2s)}) {
        Device device({.bitsPerSecond = 0});
        ASSERT_EQ(Ask(device, "@MMVAL=900000,0,0\r\n", 0s).bytes, ">MMVAL=0\r\n");
        device.FaultsOfLine().Set(fault, 1);
        EXPECT_EQ(Ask(device, "@SMOD?\r\n", 500ms).bytes, "");
        device.FaultsOfLine().SwitchAllOff();
        if (fault == Fault::Reset) {
            EXPECT_FALSE(device.Model().Commanded());
            EXPECT_EQ(device.Model().At(AxisName::X).Counts(), 0);
            EXPECT_LT(device.Model().At(AxisName::X).Origin(), -100'000);
            EXPECT_EQ(Ask(device, "@SMOD?\r\n", 500ms + back - 1us).bytes, "");
        }
        EXPECT_EQ(Ask(device, "@SMOD?\r\n", 500ms + back).bytes, ">SMOD=0\r\n");
    }
}

/// All that two hundred requests give, with the times.
std::string Transcript(std::uint64_t seed, double probabilityOfDelay, std::uint64_t& garbled) {
    Device device({.bitsPerSecond = 38'400});
    Faults& faults = device.FaultsOfLine();
    faults.SetSeed(seed);
    for (const Fault fault : {Fault::Dropped, Fault::Garbled, Fault::Split, Fault::AxisError}) {
        faults.Set(fault, 0.3);
    }
    faults.Set(Fault::Delay, probabilityOfDelay);
    std::string text;
    for (int i = 0; i < 200; ++i) {
        const Sent sent = Ask(device, "@CPOSMR?\r\n", i * 10s);
        text += sent.bytes;
        for (const Time time : sent.times) {
            text += std::to_string(time.count()) + " ";
        }
    }
    garbled = faults.Count(Fault::Garbled);
    return text;
}

TEST(Faults, SameSeedGivesTheSameRun) {
    std::uint64_t garbled = 0;
    std::uint64_t garbledBefore = 0;
    const std::string first = Transcript(7, 0, garbledBefore);
    EXPECT_EQ(Transcript(7, 0, garbled), first);
    EXPECT_NE(Transcript(8, 0, garbled), first);
    EXPECT_NE(Transcript(7, 0.5, garbled), first);
    EXPECT_EQ(garbled, garbledBefore) << "each fault has chances of its own";
    EXPECT_NEAR(static_cast<double>(garbled), 200 * 0.7 * 0.3, 20);
}

}  // namespace
}  // namespace simulator
