#include "simulation/rules.h"

#include <algorithm>
#include <cmath>
#include <regex>
#include <utility>

#include "simulation/trace.h"

namespace simulation {

bool IsKnownRequest(const std::string& request) {
    static const std::regex known(
        "@(SMOD=1|CPOSMR\\?|SSWC\\?|LABR\\?|MCND\\?|CCND\\?|MMVAL=[+-]\\d+,[+-]\\d+,[+-]\\d+|"
        "CRZM[XY]=[01]|CRZA[XY]|LBRT(\\d|10)=(\\d|[1-9]\\d{1,3}|10000))\r\n");
    return std::regex_match(request, known);
}

void LampRules::Posted(std::int32_t lamp, std::int32_t value) {
    const long counts = std::lround(std::clamp(value / 255.0 * 10'000.0, 0.0, 10'000.0));
    Lamp& one = lamps_.at(static_cast<std::size_t>(lamp));
    one.lastPosted = "@LBRT" + std::to_string(lamp) + "=" + std::to_string(counts) + "\r\n";
    one.waiting.push_back(one.lastPosted);
}

void LampRules::Sent(const std::string& request, bool again) {
    Lamp& one = lamps_.at(static_cast<std::size_t>(std::stoi(request.substr(5))));
    const auto found = std::ranges::find(one.waiting, request);
    if (again && found == one.waiting.end() && request == one.lastSent) {
        return;
    }
    Require(found != one.waiting.end(), "a lamp value is sent that nobody set, or out of order",
            request);
    one.waiting.erase(one.waiting.begin(), found + 1);
    one.lastSent = request;
}

void LampRules::Finish() const {
    for (const Lamp& one : lamps_) {
        Require(one.lastSent == one.lastPosted, "the last lamp value is not sent", one.lastPosted);
    }
}

std::size_t MoveRules::Asked(const std::string& caller, const std::string& request,
                             bool wantsNotice, std::uint32_t losses) {
    ++report_.movesAsked;
    moves_.push_back(
        {.caller = caller, .request = request, .wantsNotice = wantsNotice, .losses = losses});
    return moves_.size() - 1;
}

void MoveRules::Sent(const std::string& caller, const std::string& request) {
    const auto found = std::ranges::find_if(moves_, [&](const Move& one) {
        return one.caller == caller && one.request == request && one.sent == 0 && !one.returned;
    });
    Require(found != moves_.end(), "a move is sent that nobody asked for", request);
    found->sent = ++sent_;
    newestSent_ = static_cast<std::size_t>(found - moves_.begin());
}

void MoveRules::Excuse(Move& move) {
    if (move.wantsNotice && !move.told && !std::exchange(move.excused, true)) {
        ++report_.movesExcused;
    }
}

void MoveRules::Returned(std::size_t number, bool accepted, const std::string& reply) {
    Move& move = moves_[number];
    Require(accepted == (move.sent != 0 && HasForm(reply, ">MMVAL=")),
            "a move's result is not what its reply says", move.request + " " + reply);
    move.returned = true;
    move.accepted = accepted;
    if (!accepted) {
        return;
    }
    ++report_.movesAccepted;
    move.refusal = RefusalIn(reply);
    if (proven_ != None) {
        Excuse(moves_[proven_]);
    }
    proven_ = number;
}

void MoveRules::WorkerAsks(bool forCondition) {
    if (forCondition) {
        provenBefore_ = proven_;
        watched_ = provenAtRequest_;
        sentBefore_ = sent_;
    }
    provenAtRequest_ = proven_;
}

void MoveRules::ConditionAnswered(const std::string& reply) {
    if (mends_ || ReadMotion(reply) || newestSent_ == None) {
        return;
    }
    // The watch ends without a word. Whether it had begun is certain only for a call that returned.
    Excuse(moves_[newestSent_]);
    if (watched_ != None) {
        Excuse(moves_[watched_]);
        moves_[watched_].watchEnded = true;
    }
}

void MoveRules::Told(std::size_t number, bool finished, bool error, const McndReply& reply,
                     const std::string& wire) {
    Require(number < moves_.size() && moves_[number].sent != 0, "the end of no move is told");
    Move& move = moves_[number];
    Require(!std::exchange(move.told, true), "the end of a move is told twice", move.request);
    Require(!move.watchEnded, "a move is told of whose watch has ended", move.request);
    Require(provenBefore_ == None || number >= provenBefore_, "a move is told of that was replaced",
            move.request);
    Require(move.sent <= sentBefore_, "a move is ended by what was asked before it", move.request);
    const auto read = ReadMotion(wire);
    Require(finished && read && MotionIsBad(*read) == error && (error || !MotionGoesOn(*read)),
            "the end of a move is told that the reply does not show", wire);
    const auto same = [&](auto... fields) { return ((reply.*fields == (*read).*fields) && ...); };
    Require(
        same(&McndReply::cancelled, &McndReply::xMoving, &McndReply::yMoving, &McndReply::zMoving,
             &McndReply::xResult, &McndReply::yResult, &McndReply::zResult, &McndReply::xHwLimit,
             &McndReply::yHwLimit, &McndReply::zHwLimit, &McndReply::xSwLimit, &McndReply::ySwLimit,
             &McndReply::zSwLimit, &McndReply::replyError),
        "a move's end is told with other numbers than the reply's", wire);
    move.toldError = error;
    ++report_.movesTold;
}

void MoveRules::ReadingBegins() {
    provenBeforeReading_ = proven_;
    acceptedBeforeReading_ = report_.movesAccepted;
    for (Move& move : moves_) {
        move.toldBeforeReading = move.told;
    }
}

void MoveRules::ReadingEnds(const ZbOviskHealth& health) const {
    const std::string text = std::to_string(health.movesAccepted) + " accepted, " +
                             std::to_string(health.movesEnded) + " ended, the newest " +
                             std::to_string(health.move);
    Require(health.movesAccepted >= acceptedBeforeReading_ && health.movesAccepted <= sent_ &&
                health.movesAccepted - health.movesEnded ==
                    (health.move == ZBOVISK_MOVE_UNDER_WAY ? 1 : 0),
            "the health counts the moves wrongly", text);
    if (health.movesAccepted == 0) {
        Require(health.move == ZBOVISK_MOVE_NONE, "a move is told of before the first", text);
        return;
    }
    std::string request = "@MMVAL=";
    for (const std::int32_t count : health.moveTarget) {
        request += (count < 0 ? "" : "+") + std::to_string(count) + ",";
    }
    request.replace(request.size() - 1, 1, "\r\n");
    const auto newest = std::find_if(moves_.rbegin(), moves_.rend(), [&](const Move& one) {
        return one.sent != 0 && one.request == request;
    });
    Require(newest != moves_.rend(), "the newest move has a target that nobody gave", request);
    Require(provenBeforeReading_ == None || newest->sent >= moves_[provenBeforeReading_].sent,
            "an older move counts as the newest", request);
    CheckState(*newest, health);
}

void MoveRules::CheckState(const Move& move, const ZbOviskHealth& health) const {
    const std::string state = move.request + std::to_string(health.move) + health.moveText;
    Require(health.move >= ZBOVISK_MOVE_UNDER_WAY && health.move != ZBOVISK_MOVE_REPLACED,
            "a newest move in no such state", state);
    if (move.returned) {
        const bool isRefused = health.move == ZBOVISK_MOVE_REFUSED;
        constexpr std::size_t Longest = sizeof health.moveText - 1;
        Require(move.accepted && isRefused == move.refusal.has_value() &&
                    move.refusal.value_or("").substr(0, Longest) == health.moveText,
                "a refusal is told that the reply does not show, or not told", state);
    }
    if (move.toldBeforeReading && !move.refusal) {
        Require(health.move ==
                    (move.toldError ? ZBOVISK_MOVE_ENDED_WITH_ERROR : ZBOVISK_MOVE_ENDED_WELL),
                "a move's end is another one than the one that was told", state);
    }
    Require(move.told || !move.watchEnded || health.move == ZBOVISK_MOVE_LOST || move.refusal,
            "a move whose watch has ended without a word is not lost", state);
}

void MoveRules::ToldLost(std::size_t number, std::uint32_t losses) {
    Require(mends_ && number < moves_.size() && moves_[number].sent != 0, "no move is broken off");
    Move& move = moves_[number];
    Require(!std::exchange(move.told, true), "a move is broken off that was told", move.request);
    Require(losses > move.losses, "a move is broken off on a line that was not lost", move.request);
    move.toldError = true;
    ++report_.movesTold;
}

void MoveRules::Finish() const {
    for (const Move& one : moves_) {
        Require(!one.accepted || !one.wantsNotice || one.told || one.excused,
                "the end of a move is never told", one.request);
    }
}

void HomingRules::Began(std::chrono::nanoseconds now, bool settled) {
    ++report_.homings;
    open_ = true;
    cancelled_ = confirmed_ = false;
    automatic_ = byHand_ = Watch::Nothing;
    spareConditions_ = 1;
    settled_ = settled;
    startsLeft_.fill(settled ? 1 : 2);
    // The new run begins with its dialog, and ends what the one before may still do.
    brokenSince_ = now + std::chrono::milliseconds(1);
}

void HomingRules::LineWasLost(std::chrono::nanoseconds now) {
    // A press of just now may meet the line that is about to be back.
    if (now - lastPress_ > std::chrono::seconds(5)) {
        okPresses_ = starts_;
    }
    automatic_ = byHand_ = Watch::Nothing;
    xFinished_ = false;
}

void HomingRules::PressedOk(std::chrono::nanoseconds now) {
    lastPress_ = now;
    ++okPresses_;
    confirmed_ = isAutomatic_;
}

void HomingRules::PressedCancel(bool stops) {
    if (confirmed_) {
        return;  // The dialog is about to go, and the homing under way.
    }
    if (!std::exchange(cancelled_, true)) {
        mustStop_ = stops;
        ++report_.homingsBrokenOff;
    }
}

void HomingRules::Ended(std::chrono::nanoseconds now) {
    open_ = false;
    spareConditions_ = 1;
    if (cancelled_) {
        brokenSince_ = std::min(brokenSince_, now);
    }
}

void HomingRules::CheckHealth(const ZbOviskHealth& health) const {
    const std::string text = std::to_string(health.homing) + " " +
                             std::to_string(health.homingAxis) + " " +
                             std::to_string(health.lastHoming);
    const bool mayGoOn = isAutomatic_ && confirmed_;
    Require(health.homing == ZBOVISK_HOMING_NONE ||
                (mayGoOn && health.homing == ZBOVISK_HOMING_AUTOMATIC),
            "a homing goes on that is over", text);
    // By hand, a Cancel may come when the last axis has just finished.
    const bool isFinished = health.lastHoming == ZBOVISK_HOMING_FINISHED;
    const bool isCancelled = health.lastHoming == ZBOVISK_HOMING_CANCELLED;
    const bool isBrokenOff = health.linkLosses != 0 && health.lastHoming == ZBOVISK_HOMING_FAILED;
    Require(mayGoOn || isBrokenOff || (cancelled_ && isCancelled) || (!isAutomatic_ && isFinished),
            "a homing has ended otherwise than the health says", text);
}

void HomingRules::StartSent(Watch axis, bool automatic) {
    ++starts_;
    Require(starts_ <= okPresses_, "homing is started though nobody pressed OK");
    Require(startsLeft_[axis == Watch::Y ? 1 : 0]-- > 0, "an axis is homed twice in one run");
    if (axis == Watch::Y) {
        Require(std::exchange(xFinished_, false), "homing of Y is started before X has finished");
    } else {
        xFinished_ = false;
        brokenSince_ = cancelled_ ? brokenSince_ : std::chrono::nanoseconds::max();
    }
    (automatic ? automatic_ : byHand_) = axis;
}

void HomingRules::Sent(const std::string& request) {
    const Watch axis = request.find('X') != std::string::npos ? Watch::X : Watch::Y;
    if (request.ends_with("=1\r\n")) {
        StartSent(axis, false);
    } else if (request.ends_with("=0\r\n")) {
        byHand_ = byHand_ == axis ? Watch::Nothing : byHand_;
    } else {
        okPresses_ += axis == Watch::Y ? 1 : 0;  // The one press stands for both axes.
        StartSent(axis, true);
    }
}

void HomingRules::ConditionAsked() {
    const bool runs = open_ || automatic_ != Watch::Nothing;
    Require(runs || spareConditions_-- > 0, "homing is watched that nobody runs");
}

void HomingRules::ConditionAnswered(const Exchange& exchange) {
    const std::string reply = exchange.Text();
    // What the worker learns after the operator has broken off must not count any more.
    const bool late = !exchange.chunks.empty() && exchange.chunks.back().last > brokenSince_;
    const auto finish = [&](Watch axis, std::size_t field) {
        if (late || HomingStatus(reply, field) != '2') {
            return false;
        }
        if (byHand_ == axis) {
            byHand_ = Watch::Nothing;
            ++report_.axesHomed;
        }
        return true;
    };
    xFinished_ = finish(Watch::X, 4) || xFinished_;
    finish(Watch::Y, 5);
    Follow(reply);
}

void HomingRules::Follow(const std::string& reply) {
    if (automatic_ == Watch::Nothing) {
        return;
    }
    const auto status =
        static_cast<signed char>(HomingStatus(reply, automatic_ == Watch::X ? 4 : 5));
    if (status == '2') {
        ++report_.axesHomed;
        automatic_ = automatic_ == Watch::X ? Watch::Y : Watch::Nothing;
    } else if (status == 0 || status > '2') {
        automatic_ = Watch::Nothing;
    }
}

void HomingRules::Finish() const {
    Require(!settled_ || !cancelled_ || !mustStop_ || byHand_ == Watch::Nothing,
            "the stop of a cancelled homing is not sent");
}

}  // namespace simulation
