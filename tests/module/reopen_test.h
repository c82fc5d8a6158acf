#pragma once

#include <utility>

#include "module/homing_test.h"

namespace test_support {

inline const std::string WrongReply = ">NO=1\r\n";
inline const std::string ReopenSettings = "CmdPoll=20\nDelay=0\nReopen=1\n";

/// A module that mends a lost line, and what takes the line from it.
class ReopenTest : public HomingTest {
  protected:
    using Answers = std::vector<std::pair<std::string, std::string>>;

    void StartOnLine(const std::string& settings = ReopenSettings, std::uintptr_t data = 0) {
        StartModule(data, settings);
        Line()->With([](simulator::StageModel& stage) { stage.Place({100, 200, 300}); });
        ASSERT_TRUE(SeesPosition(1, 2, 3));
    }
    SimulatedController& Line() { return *controller; }

    /// From now on requests that begin so get these replies, an empty one being none at all.
    void Answer(const Answers& answers) {
        Line()->SetScript(
            [answers](const std::string& asked) -> std::optional<simulator::ScriptedReply> {
                for (const auto& [request, reply] : answers) {
                    if (asked.starts_with(request)) {
                        return reply;
                    }
                }
                return std::nullopt;
            });
    }
    /// Where the port is the system's own it stays, and the controller falls silent.
    void PullCable() {
        Line()->With([](simulator::Device& device) { device.PullCable(); });
    }
    void PlugCable() {
        Line()->With([](simulator::Device& device) { device.PlugCable(); });
    }
    void LoseLine() {
        PullCable();
        ASSERT_TRUE(log.WaitFor("LINE LOST\n"));
        Line()->TakeRequestLog();
    }
    void ExpectReturn() {
        EXPECT_TRUE(log.WaitFor("LINE IS BACK\n"));
        EXPECT_EQ(Health().link, ZBOVISK_LINK_ANSWERS);
    }
    std::size_t Logged(const std::string& text) {
        const std::string all = log.Text();
        std::size_t count = 0;
        for (std::size_t at = all.find(text); at != all.npos; at = all.find(text, at + 1)) {
            ++count;
        }
        return count;
    }
    /// The times from one opening of the port to the next, from now on.
    std::vector<milliseconds> TimesOfTries(std::size_t count) {
        std::vector<milliseconds> times;
        milliseconds last = Now();
        for (std::size_t seen = Logged("ZbComOpen opening"); times.size() < count; ++seen) {
            EXPECT_TRUE(Eventually([&] { return Logged("ZbComOpen opening") > seen; }));
            times.push_back(Now() - last);
            last = Now();
        }
        return times;
    }
    bool Move(CncNotifyCallback callback = nullptr, std::intptr_t data = 0) {
        return Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.01, 0, 0, callback, data);
    }
    std::vector<std::string> Sent(const std::string& begin) {
        std::vector<std::string> requests = Line()->RequestLog();
        std::erase_if(requests, [&](const auto& one) { return !one.starts_with(begin); });
        return requests;
    }
};

}  // namespace test_support
