#include "simulator/device.h"

#include <algorithm>

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

void Device::Receive(std::string_view bytes, Time now) {
    for (const std::string& request : reader_.Receive(bytes, now)) {
        Handle(request, now);
    }
}

std::string Device::TakeDue(Time now) {
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
    const auto quiet = reader_.QuietAt();
    if (outgoing_.empty()) {
        return quiet;
    }
    return quiet ? std::min(*quiet, outgoing_.front().due) : outgoing_.front().due;
}

void Device::Handle(const std::string& request, Time now) {
    requests_.push_back(request);
    if (requests_.size() > settings_.longestLog) {
        requests_.pop_front();
    }
    auto scripted = script_ ? script_(request) : std::nullopt;
    if (!scripted) {
        model_.AdvanceTo(now);
        scripted = protocol_.Answer(WithoutLineEnd(request));
    }
    Send(*scripted, now + settings_.latency);
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
