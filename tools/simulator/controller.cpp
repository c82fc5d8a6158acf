#include "simulator/controller.h"

#include <algorithm>
#include <optional>
#include <system_error>

namespace simulator {

namespace {

// Also how long a stop waits for a transport that cannot be woken.
constexpr Time LongestRead = std::chrono::milliseconds(50);

}  // namespace

Controller::Controller(Transport& transport, const DeviceSettings& settings)
    : transport_(transport), device_(settings) {}

Controller::~Controller() {
    Stop();
}

void Controller::Start() {
    stop_ = false;
    thread_ = std::thread([this] { Run(); });
}

void Controller::Stop() {
    stop_ = true;
    transport_.Wake();
    if (thread_.joinable()) {
        thread_.join();
    }
}

Time Controller::Now() const {
    return std::chrono::steady_clock::now() - switchedOn_;
}

void Controller::Run() {
    while (!stop_) {
        std::string bytes;
        std::optional<Time> due;
        bool cableIn = true;
        {
            const std::lock_guard hold(mutex_);
            bytes = device_.TakeDue(Now());
            due = device_.NextDue();
            cableIn = device_.CableIn();
        }
        FollowCable(cableIn);
        if (!bytes.empty()) {
            transport_.Write(bytes);
        }
        // Here, since a query without a line end is only taken up by TakeDue.
        received_.notify_all();
        const Time wait = due ? *due - Now() : LongestRead;
        bytes = transport_.Read(std::clamp(wait, Time::zero(), LongestRead));
        if (!bytes.empty()) {
            const std::lock_guard hold(mutex_);
            device_.Receive(bytes, Now());
        }
    }
}

void Controller::FollowCable(bool in) {
    if (in == cableIn_) {
        return;
    }
    try {
        in ? transport_.Replug() : transport_.Unplug();
        cableIn_ = in;
    } catch (const std::system_error&) {
        // The next round tries again.
    }
}

void Controller::SetScript(Script script) {
    const std::lock_guard hold(mutex_);
    device_.SetScript(std::move(script));
}

std::vector<std::string> Controller::RequestLog() const {
    const std::lock_guard hold(mutex_);
    return {device_.Requests().begin(), device_.Requests().end()};
}

std::vector<std::string> Controller::TakeRequestLog() {
    const std::lock_guard hold(mutex_);
    std::vector<std::string> log(device_.Requests().begin(), device_.Requests().end());
    device_.ForgetRequests();
    return log;
}

bool Controller::WaitForRequest(const std::string& text, std::size_t count,
                                std::chrono::milliseconds limit) const {
    std::unique_lock hold(mutex_);
    return received_.wait_for(hold, limit, [&] {
        const auto seen = std::ranges::count(device_.Requests(), text);
        return static_cast<std::size_t>(seen) >= count;
    });
}

}  // namespace simulator
