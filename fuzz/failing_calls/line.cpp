#include "failing_calls/line.h"

#include <algorithm>

#include "failing_calls/world.h"
#include "native/virtual_time.h"

namespace failing {
namespace {

constexpr std::chrono::milliseconds Latency{2};
constexpr std::chrono::milliseconds Break{30};
constexpr int BrokenReply = 7;

}  // namespace

simulator::StageModel& Line::Stage() {
    stage_.AdvanceTo(virtual_time::Elapsed());
    return stage_;
}

void Line::Judge(const std::string& request) {
    Require(!silent_, "something is sent after the stop", request);
    if (queries_.contains(request)) {
        return;
    }
    const auto asked = allowed_.find(request);
    Require(asked != allowed_.end(), "a request that nobody asked for", request);
    allowed_.erase(asked);
    if (request == "@CRZMY=1\r\n" || request == "@CRZAY\r\n") {
        Require(Stage().At(simulator::AxisName::X).Home() == simulator::HomeStatus::Finished,
                "Y is started before X has finished");
    }
}

void Line::Receive(std::string_view bytes, std::chrono::nanoseconds now) {
    Judge(std::string(bytes));
    for (const std::string& request : reader_.Receive(bytes, now)) {
        Answer(request, now);
    }
}

void Line::Answer(std::string_view request, std::chrono::nanoseconds now) {
    if (isMute_) {
        return;
    }
    request.remove_suffix(request.ends_with("\r\n") ? 2 : 0);
    Stage();
    const std::string reply = protocol_.Answer(request);
    const std::size_t first = ++answers_ % BrokenReply == 0 ? reply.size() / 2 : reply.size();
    outgoing_.emplace_back(now + Latency, reply.substr(0, first));
    if (first != reply.size()) {
        outgoing_.emplace_back(now + Latency + Break, reply.substr(first));
    }
}

void Line::SayLate(const std::string& reply) {
    outgoing_.emplace_back(virtual_time::Elapsed(), reply);
    theWorld->port->Changed();
}

std::string Line::TakeDue(std::size_t most, std::chrono::nanoseconds now) {
    if (const auto quiet = reader_.TakeQuiet(now)) {
        Answer(*quiet, now);
    }
    std::string bytes;
    while (!outgoing_.empty() && outgoing_.front().first <= now && bytes.size() < most) {
        std::string& front = outgoing_.front().second;
        const std::size_t count = std::min(front.size(), most - bytes.size());
        bytes += front.substr(0, count);
        front.erase(0, count);
        if (front.empty()) {
            outgoing_.pop_front();
        }
    }
    return bytes;
}

std::optional<std::chrono::nanoseconds> Line::NextDue() {
    auto due = reader_.QuietAt();
    if (!outgoing_.empty()) {
        due = due ? std::min(*due, outgoing_.front().first) : outgoing_.front().first;
    }
    return due;
}

}  // namespace failing
