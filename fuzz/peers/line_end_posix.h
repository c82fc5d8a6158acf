#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "simulator/protocol.h"

namespace peers {

inline constexpr std::string_view PositionQuery = "@CPOSMR?\r\n";

/// Where in an exchange of the position the line is pulled.
struct PullPlace {
    bool inReply;       ///< else in the request
    std::size_t bytes;  ///< so many of it pass
    bool whenRead;      ///< the module has read them; else at once
};

/// The controller's end of the module's line, byte by byte: a pseudo-terminal that is pulled out at
/// a chosen byte, and replaced by a new one.
class LineEnd {
  public:
    LineEnd();
    ~LineEnd();
    LineEnd(const LineEnd&) = delete;
    LineEnd& operator=(const LineEnd&) = delete;

    /// Where the stage stands, in counts.
    void Place(std::int32_t x, std::int32_t y, std::int32_t z);
    /// Pulls the line in the next exchange of the position. False if none came.
    bool PullAt(const PullPlace& place);
    /// A new line takes the place of the old one.
    void Replace();
    /// Bytes that have come over the present line.
    std::size_t BytesHeard() const { return heard_; }
    /// How many bytes a position reply has.
    std::size_t ReplyLength();

  private:
    void Open();
    void Close();
    void Run();
    void Hear(char byte);
    void Answer();
    void AwaitRead() const;

    int master_ = -1;
    int slave_ = -1;
    std::mutex mutex_;
    std::condition_variable pulled_;
    simulator::StageModel stage_;
    simulator::Protocol protocol_{stage_};
    std::string request_;
    PullPlace place_{};
    bool armed_ = false;
    std::atomic<std::size_t> heard_{0};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace peers
