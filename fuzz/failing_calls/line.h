#pragma once

#include <deque>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "native/local_port.h"
#include "simulator/protocol.h"
#include "simulator/request_reader.h"

namespace failing {

/// The controller at the far end. It answers at once, breaks one reply of seven in two, and holds
/// every request against what was asked for.
class Line : public LocalPeer {
  public:
    void Receive(std::string_view bytes, std::chrono::nanoseconds now) override;
    std::string TakeDue(std::size_t most, std::chrono::nanoseconds now) override;
    std::optional<std::chrono::nanoseconds> NextDue() override;

    /// The stage as it is now.
    simulator::StageModel& Stage();
    simulator::Protocol& Controller() { return protocol_; }

    /// This request that does something may be sent, once.
    void Allow(const std::string& request) { allowed_.insert(request); }
    bool Awaits(const std::string& request) const { return allowed_.contains(request); }
    /// Queries that only some operations need.
    void AllowQueries(const std::string& request) { queries_.insert(request); }
    /// Requests are heard and not answered, or again are.
    void SetMute(bool on) { isMute_ = on; }
    /// Says something that nobody asks for now.
    void SayLate(const std::string& reply);
    /// Nothing may be sent any more, or again.
    void SetSilent(bool on) { silent_ = on; }

  private:
    void Judge(const std::string& request);
    void Answer(std::string_view request, std::chrono::nanoseconds now);

    simulator::StageModel stage_;
    simulator::Protocol protocol_{stage_};
    simulator::RequestReader reader_{std::chrono::milliseconds(6)};
    std::set<std::string> queries_{"@CPOSMR?\r\n", "@SSWC?\r\n", "@LABR?\r\n"};
    std::multiset<std::string> allowed_;
    std::deque<std::pair<std::chrono::nanoseconds, std::string>> outgoing_;
    int answers_ = 0;
    bool silent_ = false;
    bool isMute_ = false;
};

}  // namespace failing
