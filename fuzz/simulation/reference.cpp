#include "simulation/reference.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace simulation {
namespace {

constexpr std::chrono::milliseconds EndOfRead{20};
constexpr std::size_t LongestRead = 255;

using Fields = std::vector<std::string>;

/// The name and so many fields; the last of them ends at `last`.
std::optional<Fields> CutAny(const std::string& text, std::size_t count, char last) {
    Fields fields;
    std::size_t at = 0;
    for (std::size_t i = 0; i <= count; ++i) {
        const char end = i == 0 ? '=' : i == count ? last : ',';
        at = text.find_first_not_of(end, at);
        if (at == std::string::npos) {
            return std::nullopt;
        }
        const std::size_t stop = std::min(text.find(end, at), text.size());
        fields.push_back(text.substr(at, stop - at));
        at = std::min(stop + 1, text.size());
    }
    return fields;
}

/// The same, but nothing for a refusal.
std::optional<Fields> Cut(const std::string& text, std::size_t count, char last) {
    const auto fields = CutAny(text, count, last);
    return fields && (*fields)[1][0] == '#' ? std::nullopt : fields;
}

std::int32_t Number(const std::string& field) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long long value = std::strtoll(field.c_str(), nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long long>(value, Limits::min(), Limits::max()));
}

CposmrReply PositionOf(const Fields& fields) {
    CposmrReply reply;
    const auto read = [](const std::string& field, auto& number, auto& error, auto& text) {
        error = field[0] == 'E' || field[0] == 'F' ? 1 : 0;
        error != 0 ? void(text = field) : void(number = Number(field));
    };
    read(fields[1], reply.x, reply.xError, reply.xErrorText);
    read(fields[2], reply.y, reply.yError, reply.yErrorText);
    read(fields[3], reply.z, reply.zError, reply.zErrorText);
    return reply;
}

/// The switches and the six lamps, in the order of the wire.
auto Values(SswcReply& reply) {
    return std::array{&reply.EMER_SW,   &reply.sswc2,  &reply.SW_Y,   &reply.sswc4,
                      &reply.DATA_SW,   &reply.sswc6,  &reply.sswc7,  &reply.sswc8,
                      &reply.sswc9,     &reply.sswc10, &reply.sswc11, &reply.FOOT_SW,
                      &reply.MEAS_MODE, &reply.sswc14, &reply.sswc15, &reply.sswc16};
}
auto Values(LabrReply& reply) {
    return std::array{&reply.labr1, &reply.labr2, &reply.labr4,
                      &reply.labr5, &reply.labr6, &reply.labr7};
}

SswcReply SwitchesOf(const Fields& fields) {
    SswcReply reply;
    auto field = fields.begin() + 1;
    for (std::int32_t* value : Values(reply)) {
        *value = Number(*field++);
    }
    return reply;
}

LabrReply LampsOf(const Fields& fields) {
    LabrReply reply;
    constexpr std::array Places{1U, 2U, 4U, 5U, 6U, 7U};
    auto place = Places.begin();
    for (std::int32_t* value : Values(reply)) {
        *value = Number(fields[*place++]);
    }
    return reply;
}

template <class Read>
std::optional<Record> Made(const std::optional<Fields>& fields, const Read& read) {
    return fields ? std::optional<Record>(read(*fields)) : std::nullopt;
}

}  // namespace

void Exchange::Add(std::string_view bytes, std::chrono::nanoseconds now) {
    if (chunks.empty() || now - chunks.back().last >= EndOfRead ||
        chunks.back().bytes.size() == LongestRead) {
        chunks.push_back({});
    }
    chunks.back().last = now;
    chunks.back().bytes += bytes;
}

std::string Exchange::Text() const {
    std::string text;
    for (const Chunk& chunk : chunks) {
        text += chunk.bytes.substr(0, chunk.bytes.find('\0'));
    }
    return isLate || text.find('\n') == std::string::npos ? std::string() : text;
}

bool readsStrictly = false;

bool HasForm(const std::string& text, std::string_view prefix) {
    return text.size() <= LongestRead && text.size() > prefix.size() + 2 &&
           text.starts_with(prefix) && text.ends_with("\r\n") &&
           (!readsStrictly ||
            (std::ranges::count(text, '>') == 1 && std::ranges::count(text, '\n') == 1));
}

std::optional<McndReply> ReadMotion(const std::string& text) {
    const auto fields = HasForm(text, ">MCND=") ? Cut(text, 13, ',') : std::nullopt;
    if (!fields) {
        return std::nullopt;
    }
    McndReply reply;
    auto field = fields->begin() + 1;
    for (std::int32_t* value :
         {&reply.cancelled, &reply.xMoving, &reply.yMoving, &reply.zMoving, &reply.xResult,
          &reply.yResult, &reply.zResult, &reply.xHwLimit, &reply.yHwLimit, &reply.zHwLimit,
          &reply.xSwLimit, &reply.ySwLimit, &reply.zSwLimit}) {
        *value = Number(*field++);
    }
    return reply;
}

std::optional<std::string> RefusalIn(const std::string& text) {
    const auto first = CutAny(text, 1, ',');
    if (!first || (*first)[1][0] != '#') {
        return std::nullopt;
    }
    const auto both = CutAny(text, 2, '\r');
    return both ? (*both)[2] : "";
}

bool MotionIsBad(const McndReply& reply) {
    return reply.cancelled == 1 || reply.xResult == 2 || reply.yResult == 2 || reply.zResult == 2 ||
           (reply.xHwLimit | reply.yHwLimit | reply.zHwLimit | reply.xSwLimit | reply.ySwLimit |
            reply.zSwLimit) != 0;
}

bool MotionGoesOn(const McndReply& reply) {
    return reply.xMoving == 1 || reply.yMoving == 1 || reply.zMoving == 1;
}

char HomingStatus(const std::string& text, std::size_t field) {
    if (!HasForm(text, ">CCND=")) {
        return 0;
    }
    std::size_t at = text.find('=') + 1;
    for (std::size_t i = 1;; ++i) {
        at = text.find_first_not_of(',', at);
        if (at == std::string::npos || i == field) {
            return at == std::string::npos ? '\0' : text[at];
        }
        at = std::min(text.find(',', at), text.size());
    }
}

std::optional<Record> ReadPoll(const std::string& request, const std::string& text) {
    if (request == "@CPOSMR?\r\n" && HasForm(text, ">CPOSMR=")) {
        return Made(Cut(text, 3, '\r'), PositionOf);
    }
    if (request == "@SSWC?\r\n" && HasForm(text, ">SSWC=")) {
        return Made(Cut(text, 16, '\r'), SwitchesOf);
    }
    if (request == "@LABR?\r\n" && HasForm(text, ">LABR=")) {
        return Made(Cut(text, 7, ','), LampsOf);
    }
    return std::nullopt;
}

void Merge(const Record& record, OviskData& data) {
    if (const auto* position = std::get_if<CposmrReply>(&record)) {
        data.cposmr = *position;
    } else if (const auto* switches = std::get_if<SswcReply>(&record)) {
        const SswcReply before = data.sswc;
        data.sswc = *switches;
        for (const auto latch :
             {&SswcReply::EMER_SW, &SswcReply::SW_Y, &SswcReply::DATA_SW, &SswcReply::FOOT_SW}) {
            data.sswc.*latch = switches->*latch == 1 ? 1 : before.*latch;
        }
    } else {
        LabrReply before = data.labr;
        data.labr = std::get<LabrReply>(record);
        const auto same = [](const std::int32_t* a, const std::int32_t* b) { return *a == *b; };
        const bool changed = !std::ranges::equal(Values(before), Values(data.labr), same);
        data.labr.lampChanged = before.lampChanged != 0 || changed ? 1 : 0;
    }
}

std::string Shown(const OviskData& shown, double scale) {
    OviskData data = shown;
    std::string text;
    const auto add = [&](const auto& value) { text += std::to_string(value) + " "; };
    const auto axis = [&](std::int32_t number, bool error, const std::string& code) {
        add(error ? 0 : std::lround(number / scale));
        text += error ? "error " + code + " " : code;
    };
    axis(data.cposmr.x, data.cposmr.xError != 0, data.cposmr.xErrorText);
    axis(data.cposmr.y, data.cposmr.yError != 0, data.cposmr.yErrorText);
    axis(data.cposmr.z, data.cposmr.zError != 0, data.cposmr.zErrorText);
    std::ranges::for_each(Values(data.sswc), [&](const std::int32_t* value) { add(*value); });
    std::ranges::for_each(Values(data.labr), [&](const std::int32_t* value) { add(*value); });
    add(data.labr.lampChanged);
    add(data.sswc.replyError + data.labr.replyError + data.cposmr.replyError);
    add(std::ranges::count(data.reserved, 0));
    return text + data.sswc.replyErrorText + data.labr.replyErrorText + data.cposmr.replyErrorText;
}

}  // namespace simulation
