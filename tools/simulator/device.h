#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/faults.h"
#include "simulator/protocol.h"
#include "simulator/request_reader.h"
#include "simulator/scripted_reply.h"
#include "simulator/stage_clock.h"
#include "simulator/stage_model.h"

namespace simulator {

/// How much faster than the line the stage can run.
inline constexpr double HighestTimeFactor = 1000;

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
    FaultTimes faultTimes{};
    /// Whether the host's port goes with the cable; otherwise the host only meets silence.
    bool portGoesWithCable = false;
};

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
    /// What goes wrong with the replies of the stage; nothing at first.
    Faults& FaultsOfLine() { return faults_; }
    /// From the time of the last call on the stage runs so many times faster than the line; above
    /// 0, up to HighestTimeFactor.
    void SetTimeFactor(double factor) { stageClock_.SetFactor(factor, now_); }
    double TimeFactor() const { return stageClock_.Factor(); }
    /// Pulls the cable: what is under way in either direction is lost, and what the host sends
    /// from now on too. It comes back by itself after the time given, else when it is plugged in.
    void PullCable(std::optional<Time> away = {});
    void PlugCable();
    bool CableIn() const { return cableIn_; }
    bool PortGoesWithCable() const { return settings_.portGoesWithCable; }
    /// Switches the controller off for so long: it forgets what StageModel::Reset says, and every
    /// reply that is not out yet, and hears nothing until then.
    void SwitchOff(Time away);
    bool PowerOn() const { return now_ >= bootedAt_; }
    /// Switches the controller off and on again: off for as long as it boots.
    void Reset() { SwitchOff(settings_.faultTimes.boot); }

    /// Lets the stage move on without any bytes.
    void AdvanceTo(Time now);
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
    void Reply(std::string_view request, Time now);
    std::string Answer(std::string_view request);
    std::string AnswerWithAxisError(std::string_view request);
    void ClearLine();
    bool Deaf() const { return !cableIn_ || !PowerOn(); }
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
    Time now_{0};
    StageClock stageClock_;
    Faults faults_{settings_.faultTimes};
    bool cableIn_ = true;
    /// When a pulled cable comes back by itself; nothing if somebody has to plug it in.
    std::optional<Time> cableBackAt_;
    Time bootedAt_{0};
};

}  // namespace simulator
