#include "simulator/device.h"

#include <algorithm>
#include <utility>

namespace simulator {

namespace {

constexpr unsigned BitsPerByte = 10;

Time ByteTimesAt(unsigned bitsPerSecond, std::size_t count) {
    if (bitsPerSecond == 0) {
        return Time::zero();
    }
    constexpr std::size_t Second = std::chrono::nanoseconds(std::chrono::seconds(1)).count();
    return Time(static_cast<Time::rep>(count * BitsPerByte * Second / bitsPerSecond));
}

std::string_view WithoutLineEnd(std::string_view request) {
    if (request.ends_with("\r\n")) {
        request.remove_suffix(2);
    }
    return request;
}

}  // namespace

Device::Device(const DeviceSettings& settings)
    : settings_(settings), reader_(settings.quietTime + ByteTimesAt(settings.bitsPerSecond, 2)) {}

Time Device::ByteTimes(std::size_t count) const {
    return ByteTimesAt(settings_.bitsPerSecond, count);
}

void Device::AdvanceTo(Time now) {
    now_ = std::max(now_, now);
    model_.AdvanceTo(stageClock_.At(now_));
    if (cableBackAt_ && *cableBackAt_ <= now_) {
        PlugCable();
    }
}

void Device::PullCable(std::optional<Time> away) {
    cableIn_ = false;
    cableBackAt_ = away ? std::optional(now_ + *away) : std::nullopt;
    ClearLine();
}

void Device::PlugCable() {
    cableIn_ = true;
    cableBackAt_.reset();
}

void Device::SwitchOff(Time away) {
    model_.Reset();
    bootedAt_ = now_ + away;
    ClearLine();
}

void Device::ClearLine() {
    outgoing_.clear();
    reader_.Forget();
    lineFree_ = now_;
}

void Device::Receive(std::string_view bytes, Time now) {
    AdvanceTo(now);
    if (Deaf()) {
        return;
    }
    for (const std::string& request : reader_.Receive(bytes, now)) {
        Handle(request, now);
    }
}

std::string Device::TakeDue(Time now) {
    AdvanceTo(now);
    if (const auto request = reader_.TakeQuiet(now)) {
        Handle(*request, now);
    }
    std::string bytes;
    while (!outgoing_.empty() && outgoing_.front().due <= now) {
        bytes += outgoing_.front().bytes;
        outgoing_.pop_front();
    }
    return bytes;
}

std::optional<Time> Device::NextDue() const {
    std::optional<Time> next = cableBackAt_;
    const auto add = [&](Time due) { next = next ? std::min(*next, due) : due; };
    if (const auto quiet = reader_.QuietAt()) {
        add(*quiet);
    }
    if (!outgoing_.empty()) {
        add(outgoing_.front().due);
    }
    return next;
}

void Device::Handle(const std::string& request, Time now) {
    requests_.push_back(request);
    if (requests_.size() > settings_.longestLog) {
        requests_.pop_front();
    }
    if (const auto scripted = script_ ? script_(request) : std::nullopt) {
        Send(*scripted, now + settings_.latency);
        return;
    }
    faults_.Draw();
    if (model_.Commanded() && faults_.Happens(Fault::Reset)) {
        Reset();
    } else if (faults_.Happens(Fault::Cable)) {
        PullCable(settings_.faultTimes.cableOut);
    } else if (!faults_.Happens(Fault::Silence)) {
        Reply(WithoutLineEnd(request), now);
    }
}

void Device::Reply(std::string_view request, Time now) {
    const std::string reply = Answer(request);
    if (!faults_.Happens(Fault::Dropped)) {
        Send(faults_.Spoil(reply), now + settings_.latency);
    }
}

std::string Device::Answer(std::string_view request) {
    if (faults_.Happens(Fault::Refusal)) {
        return protocol_.Refusal(request, RefusedRequest);
    }
    if (Protocol::AsksPosition(request) && faults_.Happens(Fault::AxisError)) {
        return AnswerWithAxisError(request);
    }
    return protocol_.Answer(request);
}

std::string Device::AnswerWithAxisError(std::string_view request) {
    const std::uint64_t detail = faults_.Detail(Fault::AxisError);
    const auto axis = static_cast<AxisName>(detail % AxisCount);
    const std::string code = (detail & 256U) != 0 ? "E" : "F";
    std::string& error = model_.At(axis).Settings().error;
    const std::string before = std::exchange(error, code + std::to_string(1 + (detail >> 16U) % 9));
    std::string reply = protocol_.Answer(request);
    error = before;
    return reply;
}

void Device::Send(const ScriptedReply& reply, Time start) {
    // Waking for every byte would cost more than it shows, so bytes leave by the millisecond.
    const std::size_t chunk = std::max(1U, settings_.bitsPerSecond / BitsPerByte / 1000);
    Time end = std::max(start, lineFree_);
    for (const ScriptedReply::Piece& piece : reply.pieces) {
        const Time begin = end + piece.delay;
        if (settings_.bitsPerSecond == 0) {
            outgoing_.push_back({begin, piece.bytes});
        } else {
            for (std::size_t at = 0; at < piece.bytes.size(); at += chunk) {
                const std::size_t count = std::min(chunk, piece.bytes.size() - at);
                outgoing_.push_back({begin + ByteTimes(at + count), piece.bytes.substr(at, count)});
            }
        }
        end = begin + ByteTimes(piece.bytes.size());
    }
    lineFree_ = end;
}

}  // namespace simulator
