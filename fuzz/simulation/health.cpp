#include "simulation/health.h"

#include <algorithm>
#include <string>
#include <utility>

#include "simulation/trace.h"

namespace simulation {
namespace {

using MillisecondsF = std::chrono::duration<double, std::milli>;

// What an exchange may take, in milliseconds, beside the machine's pauses: the pause of `Delay`, at
// most 30; reads until a second is over, the last of which may take 2650; the end of a read, which
// is 20 of silence behind its last byte; and the part of a millisecond that ticks leave out.
constexpr double ShortestFailure = 1000;
constexpr double LongestFailure = 30 + 1000 + 2650 + 20;
constexpr double EndOfRead = 20;
constexpr double Tick = 1;
constexpr std::size_t LongestReply = 255;

double Milli(Time time) {
    return MillisecondsF(time).count();
}

double Now() {
    return Milli(virtual_time::Elapsed());
}

bool IsGood(const Exchange& exchange) {
    const std::string text = exchange.Text();
    const std::size_t end = exchange.request.find_first_of("?=");
    const std::string prefix = ">" + exchange.request.substr(1, end - 1) + "=";
    return exchange.Asks("@SMOD") || exchange.Asks("@LBRT") || exchange.Asks("@CRZ")
               ? !text.empty()
               : HasForm(text, prefix);
}

std::int32_t LinkOf(std::uint64_t good, std::uint64_t failuresInRow) {
    return good == 0            ? ZBOVISK_LINK_NEVER_ANSWERED
           : failuresInRow == 0 ? ZBOVISK_LINK_ANSWERS
                                : ZBOVISK_LINK_FAILS;
}

void RequireFitsItself(const ZbOviskHealth& health) {
    const bool isLost = health.link == ZBOVISK_LINK_LOST;
    Require(health.failuresInRow <= health.exchangesFailed &&
                (isLost ? health.linkLosses != 0
                        : health.link == LinkOf(health.exchangesGood, health.failuresInRow)),
            "the health contradicts itself",
            "link " + std::to_string(health.link) + ", " + std::to_string(health.failuresInRow) +
                " failures in a row, " + std::to_string(health.linkLosses) + " losses");
}

}  // namespace

HealthRules::HealthRules(const Plan& plan)
    : slack_(20 * Milli(plan.LongestPause())), mends_(plan.bothKeys) {
    if (!plan.portComesLate) {
        unseen_ = 0;
    }
}

HealthRules::Moment HealthRules::EndOf(const Exchange& exchange) const {
    const double last = Milli(exchange.chunks.back().last);
    return Span{last, last + EndOfRead + slack_};
}

HealthRules::State HealthRules::After(const Exchange& exchange, bool isWorkers) const {
    State state = settled_;
    if (!IsGood(exchange)) {
        ++state.failed;
        ++state.row;
        return state;
    }
    ++state.good;
    state.row = 0;
    state.lastGood = EndOf(exchange);
    const auto record = ReadPoll(exchange.request, exchange.Text());
    if (isWorkers && record) {
        state.merging.at(record->index()) = state.lastGood;
    }
    return state;
}

void HealthRules::AddStates(const Exchange& current, bool isWorkers) {
    const double now = Now();
    const std::string text = current.Text();
    const double begin =
        text.empty() ? Milli(current.began) + ShortestFailure : EndOf(current)->first;
    // A long reply goes on behind its line end, and may be read on.
    const double end = !text.empty() && text.size() <= LongestReply
                           ? EndOf(current)->last
                           : Milli(current.began) + LongestFailure + slack_;
    if (current.number == 0 || now <= end + Tick) {
        possible_.push_back(settled_);
    }
    if (current.number == 0 || now + Tick < begin) {
        return;
    }
    possible_.push_back(After(current, isWorkers));
}

void HealthRules::WorkerGoesOn() {
    for (std::size_t part = 0; part < Parts; ++part) {
        if (auto& merging = settled_.merging.at(part)) {
            settled_.merged.at(part) = std::exchange(merging, std::nullopt);
        }
    }
    if (isReading_) {
        possible_.push_back(settled_);
    }
}

void HealthRules::ExchangeOver(const Exchange& over, bool isWorkers) {
    if (over.number == 0) {
        return;
    }
    if (isReading_) {
        AddStates(over, isWorkers);
    }
    settled_ = After(over, isWorkers);
    if (isReading_) {
        possible_.push_back(settled_);
    }
}

void HealthRules::ReadingBegins(const Exchange& current, bool isWorkers) {
    possible_.clear();
    isReading_ = true;
    readingSince_ = Now();
    AddStates(current, isWorkers);
}

bool HealthRules::IsAge(std::uint64_t age, const Moment& moment) const {
    if (!moment || age == ZBOVISK_NEVER) {
        return !moment && age == ZBOVISK_NEVER;
    }
    const auto value = static_cast<double>(age);
    return value >= readingSince_ - moment->last - Tick &&
           value <= readingUntil_ - moment->first + Tick;
}

bool HealthRules::FitsAges(const State& state, const ZbOviskHealth& health) const {
    const auto fits = [&](Part part, std::uint64_t age) {
        const Moment& merging = state.merging.at(part);
        return IsAge(age, state.merged.at(part)) || (merging && IsAge(age, merging));
    };
    return IsAge(health.millisecondsSinceGood, state.lastGood) &&
           fits(Position, health.positionAge) && fits(Switches, health.switchesAge) &&
           fits(Lamps, health.lampsAge);
}

bool HealthRules::Fits(const State& state, const ZbOviskHealth& health) const {
    const std::uint64_t unseen = health.exchangesFailed - state.failed;
    const std::uint64_t row = state.row + (state.good == 0 ? unseen : 0);
    return health.link == LinkOf(state.good, state.row) && health.exchangesGood == state.good &&
           unseen == unseen_.value_or(unseen) && health.failuresInRow == row &&
           FitsAges(state, health);
}

void HealthRules::ReadingEnds(const ZbOviskHealth& health, const Exchange& current,
                              bool isWorkers) {
    if (mends_) {
        RequireFitsItself(health);
        return;
    }
    AddStates(current, isWorkers);
    isReading_ = false;
    readingUntil_ = Now();
    const auto fitting =
        std::ranges::find_if(possible_, [&](const State& state) { return Fits(state, health); });
    Require(
        fitting != possible_.end(), "the health is none that the line makes",
        std::to_string(health.exchangesGood) + " good " + std::to_string(health.exchangesFailed) +
            " failed " + std::to_string(health.failuresInRow) + " in a row, ages " +
            std::to_string(health.millisecondsSinceGood) + " " +
            std::to_string(health.positionAge) + " " + std::to_string(health.switchesAge) + " " +
            std::to_string(health.lampsAge) + ", instead of " +
            std::to_string(possible_.back().good) + " " + std::to_string(possible_.back().failed) +
            " " + std::to_string(possible_.back().row));
    if (std::ranges::all_of(possible_,
                            [&](const State& state) { return state.failed == fitting->failed; })) {
        unseen_ = health.exchangesFailed - fitting->failed;
    }
}

}  // namespace simulation
