#include "host/readout.h"

#include <nlohmann/json.hpp>

namespace host_tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* Workers[] = {"notStarted", "runs", "stopped", "ended"};
constexpr const char* Links[] = {"neverAnswered", "answers", "fails", "lost"};
constexpr const char* Moves[] = {"none",    "underWay", "endedWell", "endedWithError",
                                 "refused", "replaced", "lost"};
constexpr const char* Homings[] = {"none", "byHand", "automatic"};
constexpr const char* HomingEnds[] = {"none", "finished", "cancelled", "failed"};

/// A number that has no word, of a newer module, stays one.
template <std::size_t Size>
Json Word(const char* const (&words)[Size], std::int32_t value) {
    const auto index = static_cast<std::size_t>(value);
    return index < Size ? Json(words[index]) : Json(value);
}

Json Age(std::uint64_t milliseconds) {
    return milliseconds == ZBOVISK_NEVER ? Json(nullptr) : Json(milliseconds);
}

Json JsonOfStage(const ZbOviskStage& stage) {
    return {
        {"x", stage.x},
        {"y", stage.y},
        {"z", stage.z},
        {"xCounts", stage.xCounts},
        {"yCounts", stage.yCounts},
        {"zCounts", stage.zCounts},
        {"xError", stage.xError},
        {"yError", stage.yError},
        {"zError", stage.zError},
        {"lampChanged", stage.lampChanged},
        {"xErrorText", stage.xErrorText},
        {"yErrorText", stage.yErrorText},
        {"zErrorText", stage.zErrorText},
        {"switches", stage.switches},
        {"lamps", stage.lamps},
    };
}

Json JsonOfHealth(const ZbOviskHealth& health) {
    return {
        {"version", health.version},
        {"worker", Word(Workers, health.worker)},
        {"homingMode", health.homingMode},
        {"scaleFactor", health.scaleFactor},
        {"port", health.port},
        {"link", Word(Links, health.link)},
        {"failuresInRow", health.failuresInRow},
        {"lastSystemError", health.lastSystemError},
        {"exchangesGood", health.exchangesGood},
        {"exchangesFailed", health.exchangesFailed},
        {"millisecondsSinceGood", Age(health.millisecondsSinceGood)},
        {"lastFailure", health.lastFailure},
        {"positionAge", Age(health.positionAge)},
        {"switchesAge", Age(health.switchesAge)},
        {"lampsAge", Age(health.lampsAge)},
        {"movesAccepted", health.movesAccepted},
        {"movesEnded", health.movesEnded},
        {"move", Word(Moves, health.move)},
        {"previousMove", Word(Moves, health.previousMove)},
        {"moveTarget", health.moveTarget},
        {"moveText", health.moveText},
        {"linkLosses", health.linkLosses},
        {"homing", Word(Homings, health.homing)},
        {"homingAxis", health.homingAxis},
        {"lastHoming", Word(HomingEnds, health.lastHoming)},
    };
}

}  // namespace

Readout ReadAll(ModuleLibrary& module) {
    Readout readout{.stage = module.Stage(), .health = module.Health()};
    module.ZbOvisk_GetAndClearLatches(&readout.anySwitch, &readout.emergency, &readout.lampChanged);
    return readout;
}

std::string JsonOf(const Readout& readout) {
    const Json json = {{"stage", JsonOfStage(readout.stage)},
                       {"latched",
                        {{"anySwitch", readout.anySwitch},
                         {"emergency", readout.emergency},
                         {"lampChanged", readout.lampChanged}}},
                       {"health", JsonOfHealth(readout.health)}};
    // What a disturbed line has put into a text need not be text.
    return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace host_tool
