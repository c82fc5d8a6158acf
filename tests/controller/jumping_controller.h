#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "native/local_port.h"
#include "simulator/device.h"
#include "support/clock.h"

namespace test_support {

/// The simulated controller at the far end of a port in memory, on the clock that jumps. Where
/// times do not jump simulator::Controller stands in its place, with the same functions.
class JumpingController : private LocalPeer {
  public:
    JumpingController(unsigned port, const simulator::DeviceSettings& settings)
        : device_(settings), portNumber_(port) {
        FollowCable();
    }

    template <class Work>
    auto With(Work&& work) {
        device_.AdvanceTo(Now());
        const struct Follow {
            JumpingController& controller;
            ~Follow() { controller.FollowCable(); }
        } follow{*this};
        if constexpr (std::is_invocable_v<Work, simulator::StageModel&>) {
            return std::forward<Work>(work)(device_.Model());
        } else {
            return std::forward<Work>(work)(device_);
        }
    }
    void SetScript(simulator::Script script) { device_.SetScript(std::move(script)); }
    std::vector<std::string> RequestLog() const {
        return {device_.Requests().begin(), device_.Requests().end()};
    }
    std::vector<std::string> TakeRequestLog() {
        std::vector<std::string> log = RequestLog();
        device_.ForgetRequests();
        return log;
    }
    bool WaitForRequest(const std::string& text, std::size_t count, milliseconds limit) const {
        return Eventually(
            [&] {
                const auto seen = std::ranges::count(device_.Requests(), text);
                return static_cast<std::size_t>(seen) >= count;
            },
            limit);
    }

  private:
    void Receive(std::string_view bytes, std::chrono::nanoseconds now) override {
        device_.Receive(bytes, now);
    }
    std::string TakeDue(std::size_t most, std::chrono::nanoseconds now) override {
        arrived_ += device_.TakeDue(now);
        std::string bytes = arrived_.substr(0, most);
        arrived_.erase(0, bytes.size());
        return bytes;
    }
    std::optional<std::chrono::nanoseconds> NextDue() override {
        return arrived_.empty() ? device_.NextDue() : std::chrono::nanoseconds(0);
    }

    /// A pulled cable takes the port away, as a pulled adapter does.
    void FollowCable() {
        if (!device_.CableIn()) {
            port_.reset();
        } else if (!port_) {
            port_.emplace(portNumber_, static_cast<LocalPeer&>(*this));
        } else {
            port_->Changed();
        }
    }

    simulator::Device device_;
    const unsigned portNumber_;
    std::optional<LocalPort> port_;
    std::string arrived_;
};

}  // namespace test_support
