#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "simulator/stage_model.h"

namespace simulator {

/// Error texts of the controller's error replies.
inline constexpr const char* UnknownRequest = "E1";
inline constexpr const char* BadValue = "E2";
inline constexpr const char* RefusedRequest = "E3";

/// Turns one request line into one reply line. Requests start with "@", replies with ">"; an
/// error reply is ">MNEMONIC=#,E1" and the line end. Not thread-safe.
///
/// What the stage answers where the wire leaves it a choice: field n of the lamp reply is lamp n
/// (1 to 7); fields 1 to 3 of the homing condition are 0; a move or an action answers 0, a setting
/// and its query the value in force; values that are not numbers in range change nothing.
class Protocol {
  public:
    explicit Protocol(StageModel& model) : model_(model) {}

    /// `request` without its line end, whatever bytes it holds. The reply has its line end.
    std::string Answer(std::string_view request);
    /// The reply that refuses the request with this error text. The stage does not see it.
    std::string Refusal(std::string_view request, const std::string& error) const;
    /// True for the query whose reply has the positions, and the errors of the axes.
    static bool AsksPosition(std::string_view request);

    /// From now on every request with this mnemonic is refused with this error text; empty: no
    /// longer.
    void Refuse(const std::string& mnemonic, const std::string& error);
    /// Whether a refused query is filled up with zeros to its usual number of fields.
    void FillRefusals(bool on) { fillRefusals_ = on; }

  private:
    StageModel& model_;
    std::map<std::string, std::string, std::less<>> refusals_;
    bool fillRefusals_ = false;
};

}  // namespace simulator
