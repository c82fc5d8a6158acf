#include "simulator/trace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "simulator/trace_text.h"

namespace simulator {

namespace {

constexpr std::string_view RequestMarker = "ZbComWrite: ";
constexpr std::string_view Receive = " receive=";
constexpr std::string_view Elapsed = " dt=";

/// How the module's other lines begin, and the later lines of texts that run over several.
constexpr std::array<std::string_view, 14> OtherLines{
    "ZbCom",    "GOODCMD ", "BADCMD", "Reply: ", "OviskCmd",  "ZbOvisk_", "MyIsCnc",
    "MOVE OUT", "HOMING ",  "MCND1 ", "MCND2 ",  " receive=", " dt=",     "MyPostLight value="};

/// Lines that a thread writes while another one's exchange begins.
constexpr std::array<std::string_view, 5> WholeLines{"MyPostLight value=", "MCND1 ", "MCND2 ",
                                                     "BADCMD COMM ERROR", "BADCMD buf="};

template <std::size_t Count>
bool StartsWithAny(std::string_view line, const std::array<std::string_view, Count>& beginnings) {
    return std::ranges::any_of(
        beginnings, [line](std::string_view beginning) { return line.starts_with(beginning); });
}

/// The length of the fixed piece of a repetition that the text begins with, 0 if it is none.
std::size_t RepetitionPiece(std::string_view text) {
    constexpr std::array<std::string_view, 6> Pieces{
        "GOODCMD send=", "BADCMD1 send=", "BADCMD2 send=", Receive, Elapsed, "\n"};
    for (const std::string_view piece : Pieces) {
        if (text.starts_with(piece)) {
            return piece.size();
        }
    }
    return 0;
}

class Parser {
  public:
    explicit Parser(std::string_view file) : source_(file), text_(source_.Text()) {}

    Trace Run();

  private:
    using Handler = std::size_t (Parser::*)(std::size_t);
    struct Marker {
        std::string_view text;
        Handler handler;
    };
    static const std::array<Marker, 8> Markers;

    std::string_view Rest(std::size_t place) const { return text_.substr(place); }
    std::size_t LineEnd(std::size_t place) const {
        return std::min(text_.find('\n', place), text_.size() - 1) + 1;
    }
    Time TimeOf(std::size_t place) const { return source_.TimeOf(place).value_or(Time::zero()); }
    void Remark(std::size_t place, const char* text) {
        trace_.remarks.push_back({source_.LineOf(place), text});
    }
    std::size_t TakeLine(std::size_t place);
    std::size_t TakeRequest(std::size_t place);
    std::size_t TakePartial(std::size_t place);
    std::size_t TakeReply(std::size_t place);
    std::size_t TakeEnd(std::size_t place);
    std::size_t TakeRepetition(std::size_t place);
    std::size_t SkipOtherThread(std::size_t place) const;
    std::size_t PayloadEnd(std::size_t place) const;
    void SetReply(std::size_t place, std::string_view reply);
    void CloseCurrent();

    TraceText source_;
    std::string_view text_;
    Trace trace_;
    /// Whether what follows can belong to the last exchange.
    bool isOpen_ = false;
};

// Where two begin alike, the longer one stands first.
const std::array<Parser::Marker, 8> Parser::Markers{{
    {RequestMarker, &Parser::TakeRequest},
    {"ZbComRead partial \"", &Parser::TakePartial},
    {"ZbComRead: ", &Parser::TakeReply},
    {"Reply: ", &Parser::TakeReply},
    {"ZbComOpenWriteRead read failure", &Parser::TakeEnd},
    {"ZbComWrite WriteFile Error: ", &Parser::TakeEnd},
    {"GOODCMD send=", &Parser::TakeRepetition},
    {"BADCMD1 send=", &Parser::TakeRepetition},
}};

Trace Parser::Run() {
    for (std::size_t place = 0; place < text_.size();) {
        place = TakeLine(place);
    }
    CloseCurrent();
    trace_.hasTimes = !text_.empty() && source_.TimeOf(text_.size() - 1).has_value();
    return std::move(trace_);
}

std::size_t Parser::TakeLine(std::size_t place) {
    const std::size_t end = LineEnd(place);
    const std::string_view line = text_.substr(place, end - place);
    const Marker* first = nullptr;
    std::size_t firstAt = line.npos;
    for (const Marker& marker : Markers) {
        const std::size_t at = line.find(marker.text);
        if (at < firstAt) {
            first = &marker;
            firstAt = at;
        }
    }
    if (first == nullptr) {
        // An "@" or ">" begins what is left over from a line that another thread broke up.
        const bool own = StartsWithAny(line, OtherLines) || line[0] == '\n' || line[0] == '\r' ||
                         line[0] == '@' || line[0] == '>';
        trace_.foreignLines += own ? 0 : 1;
        return end;
    }
    return (this->*first->handler)(place + firstAt + first->text.size());
}

/// Past what another thread wrote between the two pieces of a line: a line of its own, or the rest
/// of the repetition of the exchange before, which is known.
std::size_t Parser::SkipOtherThread(std::size_t place) const {
    const Exchange* before = trace_.exchanges.empty() ? nullptr : &trace_.exchanges.back();
    const std::string request = before == nullptr ? "" : before->request;
    const std::string reply = before == nullptr ? "" : before->Reply();
    const std::string_view front = text_.substr(0, place - RequestMarker.size());
    bool requestIsDue = front.ends_with(" send=");
    bool numberIsDue = front.ends_with(Elapsed);
    for (;;) {
        const std::string_view rest = Rest(place);
        std::size_t length = 0;
        if (StartsWithAny(rest, WholeLines)) {
            length = LineEnd(place) - place;
        } else if (requestIsDue && rest.starts_with(request)) {
            length = request.size();
            requestIsDue = false;
        } else if (numberIsDue) {
            length = std::min(rest.find_first_not_of("0123456789"), rest.size());
            numberIsDue = false;
        } else if (!reply.empty() && rest.starts_with(reply)) {
            length = reply.size();
        } else {
            length = RepetitionPiece(rest);
            requestIsDue = rest.substr(0, length).ends_with(" send=");
            numberIsDue = rest.substr(0, length) == Elapsed;
        }
        if (length == 0) {
            return place;
        }
        place += length;
    }
}

std::size_t Parser::TakeRequest(std::size_t place) {
    CloseCurrent();
    const std::size_t begin = SkipOtherThread(place);
    const std::size_t end = LineEnd(begin);
    std::string request(text_.substr(begin, end - begin));
    const bool isMixed = begin != place;
    if (request.size() < 2 || (isMixed && request[0] != '@')) {
        Remark(place, "a request without its text");
        return LineEnd(place);
    }
    if (isMixed) {
        Remark(place, "lines of two threads mixed, taken apart");
    }
    if (!request.ends_with("\r\n") && !Rest(end).starts_with('\n')) {
        request.pop_back();  // The line-feed is the log's own.
    }
    trace_.exchanges.push_back({source_.LineOf(place), TimeOf(place), std::move(request), {}});
    isOpen_ = true;
    return end;
}

std::size_t Parser::TakePartial(std::size_t place) {
    constexpr std::string_view Close = "\" byte count ";
    constexpr std::size_t LongestRead = 255;
    const std::size_t end = LineEnd(place);
    const std::string_view line = text_.substr(place, end - place);
    const std::size_t close = line.rfind(Close);
    if (!isOpen_ || close == line.npos) {
        Remark(place, "a piece of a reply that fits nowhere");
        return end;
    }
    std::string bytes(line.substr(0, close));
    std::size_t count = 0;
    const std::string_view digits = line.substr(close + Close.size());
    std::from_chars(digits.data(), digits.data() + digits.size(), count);
    if (count > bytes.size() && count <= LongestRead) {
        bytes.resize(count, '\0');  // The module looks at nothing behind the first NUL.
    }
    trace_.exchanges.back().pieces.push_back({TimeOf(place), std::move(bytes)});
    return end;
}

void Parser::SetReply(std::size_t place, std::string_view reply) {
    Exchange& exchange = trace_.exchanges.back();
    const std::string before = exchange.Reply();
    if (reply.starts_with(before)) {
        reply.remove_prefix(before.size());
    } else {
        exchange.pieces.clear();
    }
    exchange.pieces.push_back({TimeOf(place), std::string(reply)});
    exchange.complete = true;
}

/// A reply stands in the log twice. What another thread wrote into one of the two makes it longer.
std::size_t Parser::TakeReply(std::size_t place) {
    if (!isOpen_) {
        return LineEnd(place);
    }
    Exchange& exchange = trace_.exchanges.back();
    const std::string known = exchange.Reply();
    if (exchange.complete && Rest(place).starts_with(known)) {
        return place + known.size();
    }
    const std::size_t end = PayloadEnd(place);
    const std::string_view reply = text_.substr(place, end - place - 1);
    if (reply.find('\n') == reply.npos) {
        return end;
    }
    if (!exchange.complete) {
        SetReply(place, reply);
    } else if (reply.size() < known.size()) {
        exchange.pieces = {{exchange.pieces.back().at, std::string(reply)}};
        Remark(place, "lines of two threads mixed, taken apart");
    }
    return end;
}

std::size_t Parser::TakeEnd(std::size_t place) {
    if (isOpen_) {
        trace_.exchanges.back().complete = true;
    }
    return LineEnd(place);
}

/// The line that repeats request and reply of an exchange puts right what was lost or mixed.
std::size_t Parser::TakeRepetition(std::size_t place) {
    const std::size_t sendEnd = LineEnd(place);
    const std::string_view send = text_.substr(place, sendEnd - place);
    if (send.find(RequestMarker) != send.npos) {
        return place;  // A request of another thread stands in the middle.
    }
    if (!isOpen_ || !Rest(sendEnd).starts_with(Receive)) {
        return sendEnd;
    }
    const std::size_t begin = sendEnd + Receive.size();
    const std::size_t end = PayloadEnd(begin);
    const std::size_t feed = Rest(end).starts_with(Elapsed) ? 0 : 1;
    const std::string_view receive = text_.substr(begin, end - begin - feed);
    if (receive.find(RequestMarker) != receive.npos) {
        return sendEnd;
    }
    Exchange& exchange = trace_.exchanges.back();
    if (!exchange.complete && send == exchange.request) {
        SetReply(begin, receive);
    } else if (exchange.complete && send != exchange.request && receive == exchange.Reply()) {
        exchange.request = send;
        Remark(place, "lines of two threads mixed, the request put right");
    }
    return end;
}

/// The line-feed that ends a text is the last byte in front of the module's next line.
std::size_t Parser::PayloadEnd(std::size_t place) const {
    constexpr std::size_t LongestReply = std::size_t{65} * 1024;
    std::size_t end = LineEnd(place);
    while (end < text_.size() && end - place < LongestReply &&
           !StartsWithAny(Rest(end), OtherLines)) {
        end = LineEnd(end);
    }
    return end;
}

void Parser::CloseCurrent() {
    if (isOpen_ && !trace_.exchanges.back().complete) {
        trace_.remarks.push_back({trace_.exchanges.back().line, "the reply is not in the log"});
    }
    isOpen_ = false;
}

}  // namespace

std::string Exchange::Reply() const {
    std::string reply;
    for (const Piece& piece : pieces) {
        reply += piece.bytes.substr(0, piece.bytes.find('\0'));
    }
    return reply;
}

Trace ReadTrace(std::string_view file) {
    return Parser(file).Run();
}

}  // namespace simulator
