#include "simulator/replay.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace simulator {

namespace {

using std::chrono::milliseconds;

constexpr std::string_view RemoteMode = "@SMOD=1\r\n";
constexpr std::string_view Move = "@MMVAL";
constexpr std::string_view Lamp = "@LBRT";
constexpr std::string_view OriginReturn = "@CRZ";

/// What the module polls.
std::vector<PollLane> PollLanes() {
    return {PollLane("@CPOSMR?\r\n"), PollLane("@SSWC?\r\n"), PollLane("@LABR?\r\n"),
            PollLane("@MCND?\r\n", Move), PollLane("@CCND?\r\n", OriginReturn)};
}

/// What stands in front of the values.
std::string_view NameOf(std::string_view request) {
    return request.substr(0, request.find_first_of("=?\r\n"));
}

std::string Plural(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

/// A request on one line of a report; a line end other than the usual one is shown.
std::string Shown(std::string_view request) {
    const bool usual = request.ends_with("\r\n");
    std::string text;
    for (const char byte : request.substr(0, request.size() - (usual ? 2 : 0))) {
        if (byte == '\r' || byte == '\n') {
            text += byte == '\r' ? "\\r" : "\\n";
        } else {
            text += byte < ' ' || byte > '~' ? '.' : byte;
        }
    }
    return text + (usual ? "" : " (without its line end)");
}

}  // namespace

Replay::Replay(Trace trace, const ReplaySettings& settings)
    : trace_(std::move(trace)), settings_(settings) {
    Rewind();
}

void Replay::Rewind() {
    states_.assign(trace_.exchanges.size(), State::Waiting);
    direct_ = posted_ = {};
    polls_ = PollLanes();
    reached_ = 0;
    hasBegun_ = endIsTold_ = false;
    for (std::size_t i = 0; i < trace_.exchanges.size(); ++i) {
        const Exchange& exchange = trace_.exchanges[i];
        const auto poll = std::ranges::find(polls_, exchange.request, &PollLane::Request);
        if (poll == polls_.end()) {
            LaneOf(exchange.request).entries.push_back(i);
            std::ranges::for_each(polls_,
                                  [&](PollLane& lane) { lane.AddCommand(i, exchange.request); });
        } else if (exchange.complete) {
            poll->Add(i);
        }
    }
}

CommandLane& Replay::LaneOf(std::string_view request) {
    const bool isPosted = (request.starts_with(Lamp) && NameOf(request).size() < request.size() &&
                           request[NameOf(request).size()] == '=') ||
                          request.starts_with(OriginReturn);
    return isPosted ? posted_ : direct_;
}

ScriptedReply Replay::Answer(const std::string& request) {
    if (BeginsAnew(request)) {
        Say("the record begins anew" + (AtEnd() ? "" : ", not yet at its end: " + NextEntry()));
        Finish();
        Rewind();
    }
    if (PrecedesTheRecord(request)) {
        Say("note: the record begins after the start of its host: no reply to " + Shown(request));
        return "";
    }
    hasBegun_ = true;
    const auto lane = std::ranges::find(polls_, request, &PollLane::Request);
    ScriptedReply reply = lane != polls_.end() ? AnswerPoll(*lane) : AnswerCommand(request);
    if (!endIsTold_ && AtEnd()) {
        endIsTold_ = true;
        Say("the end of the record is reached");
    }
    return reply;
}

/// A host that starts puts the controller into remote mode first.
bool Replay::BeginsAnew(const std::string& request) const {
    const bool isExpected =
        !direct_.Done() && trace_.exchanges[direct_.entries[direct_.next]].request == request;
    return settings_.loop && hasBegun_ && request == RemoteMode && !isExpected;
}

bool Replay::PrecedesTheRecord(const std::string& request) const {
    return !hasBegun_ && request == RemoteMode && !trace_.exchanges.empty() &&
           trace_.exchanges.front().request != request;
}

ScriptedReply Replay::AnswerPoll(PollLane& lane) {
    const PollLane::Choice choice = lane.Choose(reached_);
    if (!choice.entry && AtEnd() && (!lane.IsCondition() || lane.Beginning())) {
        return "";  // The recording was stopped before this one had its time.
    }
    if (!choice.entry) {
        return AnswerUnknown(std::string(lane.Request()));
    }
    if (choice.isRecorded) {
        ++counts_.followed;
        states_[*choice.entry] = State::Answered;
        return Tell(*choice.entry);
    }
    if (settings_.patience > 0 && lane.Gaps() > settings_.patience && GiveUpLimit(lane)) {
        return AnswerPoll(lane);
    }
    // One more may have been on its way when its time was over.
    if (lane.IsCondition() && lane.Gaps() == 2 && lane.EndsInChange(trace_)) {
        ++counts_.additional;
        Say("departure: " + Shown(lane.Request()) + " is still asked for after " +
            Entry(*choice.entry) + ", the last one recorded there");
    }
    ++counts_.repeated;
    return Tell(*choice.entry);
}

/// Passes over the command that the polls have waited for and those in front of it. False when they
/// wait for none.
bool Replay::GiveUpLimit(const PollLane& lane) {
    const auto limit = lane.Limit();
    if (limit) {
        for (CommandLane* commands : {&direct_, &posted_}) {
            const auto behind = std::ranges::upper_bound(commands->entries, *limit);
            PassOver(*commands, static_cast<std::size_t>(behind - commands->entries.begin()), "");
        }
    }
    return limit.has_value();
}

ScriptedReply Replay::AnswerCommand(const std::string& request) {
    CommandLane& lane = LaneOf(request);
    const std::size_t end = std::min(lane.next + settings_.window, lane.entries.size());
    for (std::size_t position = lane.next; position < end; ++position) {
        const std::size_t index = lane.entries[position];
        if (trace_.exchanges[index].request == request) {
            PassOver(lane, position, request);
            ++counts_.followed;
            Pass(lane, State::Answered);
            return Tell(index);
        }
    }
    if (lane.Done() ||
        NameOf(trace_.exchanges[lane.entries[lane.next]].request) != NameOf(request)) {
        return AnswerUnknown(request);
    }
    ++counts_.changed;
    Say("departure: " + Shown(request) + " came in the place of " + Entry(lane.entries[lane.next]) +
        ": no reply");
    Pass(lane, State::PassedOver);
    return "";
}

ScriptedReply Replay::AnswerUnknown(const std::string& request) {
    ++counts_.additional;
    if (reported_.insert(request).second) {
        Say("departure: the record does not have " + Shown(request) + " here: no reply; " +
            NextEntry());
    }
    return "";
}

ScriptedReply Replay::Tell(std::size_t index) const {
    // The module's reading ends when the line has been silent for so long.
    constexpr Time Silence = milliseconds(20);
    constexpr Time LongestDelay = std::chrono::seconds(10);
    const Exchange& exchange = trace_.exchanges[index];
    std::vector<ScriptedReply::Piece> pieces;
    Time end{0};
    for (const Exchange::Piece& piece : exchange.pieces) {
        const Time due = std::clamp(piece.at - exchange.at - Silence, end, LongestDelay);
        const bool timed = settings_.timing && trace_.hasTimes;
        pieces.push_back({timed ? due - end : Time::zero(), piece.bytes});
        end = due;
    }
    return {std::move(pieces)};
}

/// Passes over the commands in front of `position`, since `instead` came or they were waited for.
void Replay::PassOver(CommandLane& lane, std::size_t position, const std::string& instead) {
    while (lane.next < position) {
        const std::size_t index = lane.entries[lane.next];
        // Of several posted commands with one name that wait, the module sends the newest only.
        if (&lane == &posted_ && NameOf(trace_.exchanges[index].request) == NameOf(instead)) {
            ++counts_.folded;
        } else {
            Missing(index, instead.empty() ? "was waited for in vain"
                                           : "is missing in front of " + Shown(instead));
        }
        Pass(lane, State::PassedOver);
    }
}

/// Steps over the lane's next command, and moves the polls into the spans that begin with it.
void Replay::Pass(CommandLane& lane, State state) {
    const std::size_t index = lane.entries[lane.next++];
    states_[index] = state;
    reached_ = std::max(reached_, index + 1);
    for (PollLane& polls : polls_) {
        while (polls.Limit() && states_[*polls.Limit()] != State::Waiting) {
            CheckSpan(polls);
            polls.PassLimit();
        }
    }
}

void Replay::CheckSpan(const PollLane& lane) {
    const auto beginning = lane.Beginning();
    if (!lane.IsCondition() || !beginning || states_[*beginning] != State::Answered) {
        return;
    }
    if (const auto unasked = lane.Unasked(trace_)) {
        Missing(*unasked,
                "is missing: the module does not watch what " + Entry(*beginning) + " has begun");
    }
}

bool Replay::AtEnd() const {
    if (!direct_.Done() || !posted_.Done()) {
        return false;
    }
    bool anyIsLeft = false;
    for (const PollLane& lane : polls_) {
        if (!lane.IsCondition() && lane.HasEntriesFrom(reached_)) {
            if (lane.Exhausted()) {
                return true;
            }
            anyIsLeft = true;
        }
    }
    return !anyIsLeft;
}

void Replay::Finish() {
    if (AtEnd()) {
        std::ranges::for_each(polls_, [this](const PollLane& lane) { CheckSpan(lane); });
    }
}

void Replay::Missing(std::size_t index, const std::string& why) {
    ++counts_.missing;
    Say("departure: " + Entry(index) + " " + why);
}

std::string Replay::Entry(std::size_t index) const {
    const Exchange& exchange = trace_.exchanges[index];
    return "line " + std::to_string(exchange.line) + ": " + Shown(exchange.request);
}

std::string Replay::NextEntry() const {
    const auto next = std::find(states_.begin() + static_cast<std::ptrdiff_t>(reached_),
                                states_.end(), State::Waiting);
    return next == states_.end()
               ? "nothing is left of it"
               : "next is " + Entry(static_cast<std::size_t>(next - states_.begin()));
}

std::vector<std::string> Replay::TakeMessages() {
    return std::exchange(messages_, {});
}

std::string Replay::Summary() const {
    std::ostringstream text;
    text << (AtEnd() ? "followed to the end" : "stopped before the end, " + NextEntry()) << "\n"
         << Plural(counts_.followed, "exchange") << " as recorded (the record has "
         << trace_.exchanges.size() << "), " << Plural(counts_.repeated, "poll")
         << " more than recorded, " << Plural(counts_.folded, "command") << " folded\n"
         << Plural(counts_.Departures(), "departure") << ": " << counts_.missing << " missing, "
         << counts_.additional << " additional, " << counts_.changed << " changed";
    return text.str();
}

std::string Describe(const Trace& trace) {
    constexpr std::size_t LongestList = 20;
    std::ostringstream text;
    text << Plural(trace.exchanges.size(), "exchange");
    if (!trace.exchanges.empty()) {
        text << " from line " << trace.exchanges.front().line << " to line "
             << trace.exchanges.back().line << (trace.hasTimes ? ", with" : ", without")
             << " times";
    }
    text << "; skipped " << Plural(trace.foreignLines, "foreign line");
    for (std::size_t i = 0; i < std::min(trace.remarks.size(), LongestList); ++i) {
        text << "\nline " << trace.remarks[i].line << ": " << trace.remarks[i].text;
    }
    if (trace.remarks.size() > LongestList) {
        text << "\nand " << trace.remarks.size() - LongestList << " more remarks";
    }
    return text.str();
}

}  // namespace simulator
