#include "simulation/wire.h"

#include <algorithm>
#include <utility>

#include "simulation/world.h"

namespace simulation {
namespace {

constexpr unsigned BitsPerByte = 10;
constexpr std::size_t LongestRead = 255;

Time Elapsed() {
    return virtual_time::Elapsed();
}

}  // namespace

Wire::Wire(const Plan& plan, Report& report)
    : plan_(plan), report_(report), faults_(plan.chance, plan.percent, report) {}

simulator::StageModel& Wire::Stage() {
    stage_.AdvanceTo(Elapsed());
    return stage_;
}

Time Wire::ByteTimes(std::size_t count) const {
    const auto bits = static_cast<Time::rep>(count * BitsPerByte);
    return plan_.bitsPerSecond == 0 ? Time::zero()
                                    : Time(bits * 1'000'000'000 / plan_.bitsPerSecond);
}

void Wire::Receive(std::string_view bytes, std::chrono::nanoseconds /*now*/) {
    const std::string& thread = ThisThread();
    const std::string request(bytes);
    world->trace.Note(thread, "> " + request);
    Require(!unread_, "a request goes out before the one before was read", request);
    unread_ = true;
    world->health.ExchangeOver(Newest(), NewestIsWorkers());
    owner_ = thread;
    if (thread == Worker) {
        world->health.WorkerGoesOn();
        FinishWorkersExchange();
        answered_ = {};
    }
    if (plan_.bothKeys) {
        RequireNothingWaits();
    }
    exchanges_[thread] = {.request = request,
                          .chunks = {},
                          .number = ++report_.exchanges,
                          .began = Elapsed(),
                          .isLate = std::exchange(foundLate_, false)};
    Judge(thread, request);
    const Time now = Elapsed();
    if (pluggedIn_ && now >= startedAt_) {
        for (const std::string& heard : reader_.Receive(faults_.Hear(request), now)) {
            Answer(heard, now);
        }
    }
}

void Wire::Judge(const std::string& thread, const std::string& request) {
    Require(IsKnownRequest(request), "a request that does not exist", request);
    if (thread == Worker) {
        Require(!workerIsOver_, "the worker sends something after the stop", request);
        world->moves.WorkerAsks(request.starts_with("@MCND"));
    }
    if (request.starts_with("@LBRT")) {
        world->lamps.Sent(request, plan_.bothKeys);
    } else if (request.starts_with("@MMVAL")) {
        world->moves.Sent(thread, request);
    } else if (request.starts_with("@CRZ")) {
        world->homing.Sent(request);
    } else if (request.starts_with("@CCND")) {
        world->homing.ConditionAsked();
    } else if (request.starts_with("@SMOD")) {
        const bool mends = thread == Worker && plan_.bothKeys;
        Require(mends || std::exchange(world->starts, false),
                "remote mode is set though nobody starts");
        if (mends) {
            world->homing.LineWasLost(Elapsed());
        }
    }
    Require(thread == Worker || request.starts_with("@MMVAL") || request.starts_with("@SMOD"),
            "a request of the worker's comes from another thread", request);
}

bool Wire::NewestIsWorkers() const {
    return owner_ == Worker;
}

std::optional<Record> Wire::UnderWay() {
    const Exchange& exchange = exchanges_[Worker];
    return ReadPoll(exchange.request, exchange.Text());
}

void Wire::FinishWorkersExchange() {
    const Exchange& exchange = exchanges_[Worker];
    const auto record = UnderWay();
    world->mirror.Settle(record);
    if (record) {
        CountJoined(exchange, *record);
        CompareWithAnswer(exchange, *record);
    }
    if (exchange.Asks("@MCND")) {
        world->moves.ConditionAnswered(exchange.Text());
    } else if (exchange.Asks("@CCND")) {
        world->homing.ConditionAnswered(exchange);
    } else if (exchange.Asks("@CPOSMR")) {
        report_.goodPolls += record ? 1 : 0;
        if (exchange.number > calmSince_) {
            ++pollsSinceCalm_;
            Require(record || pollsSinceCalm_ < pollsAllowed_, "not alive again on a good line",
                    exchange.Text());
        }
    }
}

/// Replies that ran together may make a good one.
void Wire::CountJoined(const Exchange& exchange, const Record& record) {
    const std::string text = exchange.Text();
    const std::size_t second = text.find(text.substr(0, 2), 2);
    if (second == std::string::npos) {
        return;
    }
    ++report_.joined;
    OviskData whole;
    Merge(record, whole);
    for (const std::string& part : {text.substr(0, second), text.substr(second)}) {
        const std::string ended = part.ends_with("\r\n") ? part : part + "\r\n";
        if (const auto alone = ReadPoll(exchange.request, ended)) {
            OviskData one;
            Merge(*alone, one);
            if (Shown(one) == Shown(whole)) {
                return;
            }
        }
    }
    ++report_.mixed;
    world->trace.Note("wire", "mixed from two replies: " + text);
}

void Wire::CompareWithAnswer(const Exchange& exchange, const Record& record) {
    const auto shows = [&](const std::string& reply) {
        OviskData told;
        OviskData meant;
        const auto answer = ReadPoll(exchange.request, reply);
        Merge(record, told);
        if (answer) {
            Merge(*answer, meant);
        }
        return answer && Shown(told) == Shown(meant);
    };
    if (!plan_.bothKeys || shows(answered_.whole)) {
        return;
    }
    const std::string text = exchange.Text();
    if (answered_.isSpoilt) {
        ++report_.garbled;
    } else {
        Require(std::ranges::count(olderReplies_, text) != 0,
                "a record with numbers that the controller did not give", text);
        ++report_.older;
        world->trace.Note("wire", "the answer to an older question: " + text);
    }
}

void Wire::Answer(const std::string& request, Time now) {
    stage_.AdvanceTo(now);
    std::string_view plain = request;
    plain.remove_suffix(plain.ends_with("\r\n") ? 2 : 0);
    Time at = std::max(now + plan_.latency, lineFree_);
    const std::string whole = protocol_.Answer(plain);
    std::string sent;
    for (const Piece& piece : faults_.Spoil(whole)) {
        sent += piece.bytes;
        at += piece.delay;
        Send(piece.bytes, at);
        at += ByteTimes(piece.bytes.size());
    }
    lineFree_ = at;
    NoteAnswer({whole, faults_.SpoiltBytes()}, sent);
}

void Wire::NoteAnswer(const Answered& answered, const std::string& sent) {
    constexpr std::size_t Remembered = 200;
    olderReplies_.push_back(sent);
    if (olderReplies_.size() > Remembered) {
        olderReplies_.pop_front();
    }
    if (owner_ == Worker) {
        answered_ = answered;
    }
}

void Wire::Send(const std::string& bytes, Time begin) {
    // Bytes arrive by the millisecond, as those of a real line do.
    const std::size_t chunk = plan_.bitsPerSecond == 0
                                  ? std::max<std::size_t>(1, bytes.size())
                                  : std::max(1U, plan_.bitsPerSecond / BitsPerByte / 1000);
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
        const std::size_t count = std::min(chunk, bytes.size() - at);
        outgoing_.push_back({begin + ByteTimes(at + count), bytes.substr(at, count)});
    }
}

void Wire::Advance(Time now) {
    if (const auto quiet = reader_.TakeQuiet(now)) {
        Answer(*quiet, now);
    }
    for (; !outgoing_.empty() && outgoing_.front().due <= now; outgoing_.pop_front()) {
        if (pluggedIn_) {
            waitsSince_ = arrived_.empty() ? outgoing_.front().due : waitsSince_;
            arrived_ += outgoing_.front().bytes;
        } else {
            answered_.isSpoilt = true;  // What is left of a line may have its form still.
        }
    }
}

std::string Wire::TakeDue(std::size_t most, std::chrono::nanoseconds /*now*/) {
    const std::string& thread = ThisThread();
    if (looks_) {
        return TakeLate(most);
    }
    Require(thread == owner_, "two exchanges at one time", owner_ + " and " + thread);
    unread_ = false;
    Advance(Elapsed());
    std::string bytes = arrived_.substr(0, most);
    arrived_.erase(0, bytes.size());
    if (!bytes.empty()) {
        world->trace.Note(thread, "< " + bytes);
        exchanges_[thread].Add(bytes, Elapsed());
        if (thread == Worker) {
            world->mirror.StillReads();
        }
    }
    return bytes;
}

/// What waited on the line has been read away, but for what came in the last moment.
void Wire::RequireNothingWaits() {
    Advance(Elapsed());
    const Time moment = Milliseconds(2) + 4 * plan_.LongestPause();
    Require(arrived_.empty() || Elapsed() - waitsSince_ <= moment, "a late reply is left to wait",
            arrived_);
}

std::string Wire::TakeLate(std::size_t most) {
    Advance(Elapsed());
    std::string bytes = arrived_.substr(0, most);
    arrived_.erase(0, bytes.size());
    if (!bytes.empty()) {
        foundLate_ = true;
        world->trace.Note(ThisThread(), "drops " + bytes);
    }
    return bytes;
}

std::optional<std::chrono::nanoseconds> Wire::NextDue() {
    auto due = reader_.QuietAt();
    if (!outgoing_.empty()) {
        due = due ? std::min(*due, outgoing_.front().due) : outgoing_.front().due;
    }
    const Milliseconds start(plan_.clock.firstTick);
    return due ? std::optional(start + *due) : std::nullopt;
}

void Wire::PlugCable(bool in) {
    Advance(Elapsed());
    pluggedIn_ = in;
    world->trace.Note("wire", in ? "cable in" : "cable out");
}

void Wire::Reset(Time starts) {
    Advance(Elapsed());
    world->trace.Note("wire", "reset");
    std::array<double, simulator::AxisCount> places{};
    for (std::size_t i = 0; i < places.size(); ++i) {
        places[i] = Stage().At(static_cast<simulator::AxisName>(i)).Counts();
    }
    stage_ = {};
    stage_.Place(places);
    outgoing_.clear();
    lineFree_ = startedAt_ = Elapsed() + starts;
}

void Wire::ExpectLife() {
    Advance(Elapsed());
    std::size_t unread = arrived_.size();
    for (const Outgoing& one : outgoing_) {
        unread += one.bytes.size();
    }
    calmSince_ = report_.exchanges;
    pollsAllowed_ = 2 + static_cast<int>(unread / LongestRead);
}

Time Wire::StopFaults() {
    faults_.Stop();
    return std::max({Elapsed(), lineFree_, startedAt_});
}

}  // namespace simulation
