#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/protocol.h"
#include "simulator/request_reader.h"
#include "simulator/stage_model.h"

namespace simulator {

struct DeviceSettings {
    /// Speed of the line, 10 bits a byte; 0: replies take no time on the line.
    unsigned bitsPerSecond = 38'400;
    /// From the end of a request to the start of its reply.
    Time latency{0};
    /// How long the line is quiet before a query without a line end is answered. Two byte times
    /// of the line are added to it.
    Time quietTime = std::chrono::milliseconds(5);
    /// So many requests are remembered; older ones are forgotten.
    std::size_t longestLog = 20'000;
};

/// What goes out in the place of a standard reply: any bytes, in pieces. The delay of the first
/// piece counts from the moment at which the standard reply would start, that of the others from
/// the end of the piece before.
struct ScriptedReply {
    struct Piece {
        Time delay{0};
        std::string bytes;
    };

    /// These bytes, without delay; the empty text stays silent.
    ScriptedReply(std::string bytes) { pieces.push_back({Time::zero(), std::move(bytes)}); }
    ScriptedReply(const char* bytes) : ScriptedReply(std::string(bytes)) {}
    ScriptedReply(std::vector<Piece> timedPieces) : pieces(std::move(timedPieces)) {}

    std::vector<Piece> pieces;
};

/// Asked first for every request, which it gets as it stood on the wire, with its line end if it
/// had one. Nothing: the standard reply goes out. A reply of its own: the stage does not see the
/// request at all. A lambda may return std::optional<std::string> as well.
using Script = std::function<std::optional<ScriptedReply>(const std::string& request)>;

/// The controller on its line, without a clock or a thread: bytes in, bytes out when they are due.
/// Whoever owns it says what time it is; times must not run backwards. Not thread-safe.
class Device {
  public:
    explicit Device(const DeviceSettings& settings = {});
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    StageModel& Model() { return model_; }
    /// For refusals on demand.
    Protocol& Wire() { return protocol_; }
    void SetScript(Script script) { script_ = std::move(script); }

    /// Lets the stage move on without any bytes.
    void AdvanceTo(Time now) { model_.AdvanceTo(now); }
    /// Takes bytes that the host sent.
    void Receive(std::string_view bytes, Time now);
    /// The bytes that have passed the line by `now`; empty if there are none.
    std::string TakeDue(Time now);
    /// When `TakeDue` next has something to do; nothing while only new bytes can change that.
    std::optional<Time> NextDue() const;

    /// The requests as they stood on the wire, oldest first.
    const std::deque<std::string>& Requests() const { return requests_; }
    void ForgetRequests() { requests_.clear(); }

  private:
    struct Outgoing {
        Time due;
        std::string bytes;
    };

    void Handle(const std::string& request, Time now);
    void Send(const ScriptedReply& reply, Time start);
    Time ByteTimes(std::size_t count) const;

    DeviceSettings settings_;
    StageModel model_;
    Protocol protocol_{model_};
    RequestReader reader_;
    Script script_;
    std::deque<Outgoing> outgoing_;
    std::deque<std::string> requests_;
    Time lineFree_{0};
};

}  // namespace simulator
