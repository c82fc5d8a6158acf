#include "simulator/request_reader.h"

#include <utility>

namespace simulator {

std::vector<std::string> RequestReader::Receive(std::string_view bytes, Time now) {
    std::vector<std::string> requests;
    for (const char byte : bytes) {
        if (byte == '@') {
            if (LooksComplete()) {
                TakePending(requests);
            }
            pending_.clear();
            tooLong_ = false;
        }
        if (!tooLong_) {
            pending_ += byte;
        }
        if (pending_.size() > LongestRequest) {
            pending_.clear();
            tooLong_ = true;
        }
        if (byte == '\n') {
            TakePending(requests);
            tooLong_ = false;
        }
    }
    lastByte_ = now;
    return requests;
}

void RequestReader::TakePending(std::vector<std::string>& requests) {
    // A bare line end is the late end of a query that has been answered, or an empty line.
    const bool bare = pending_.empty() || pending_ == "\n" || pending_ == "\r\n";
    std::string request = std::exchange(pending_, {});
    if (!bare) {
        requests.push_back(std::move(request));
    }
}

void RequestReader::Forget() {
    pending_.clear();
    tooLong_ = false;
}

std::optional<std::string> RequestReader::TakeQuiet(Time now) {
    const auto due = QuietAt();
    return due && *due <= now ? std::optional(std::exchange(pending_, {})) : std::nullopt;
}

std::optional<Time> RequestReader::QuietAt() const {
    return LooksComplete() ? std::optional(lastByte_ + quietTime_) : std::nullopt;
}

}  // namespace simulator
