#include "simulator/faults.h"

#include <algorithm>
#include <charconv>

namespace simulator {

// The order is that of the enumeration.
const std::array<FaultText, FaultCount> FaultTexts{{
    {"silence", "the request is not heard: nothing is done and nothing answered"},
    {"dropped", "the request is carried out, its reply is lost"},
    {"delay", "the reply comes 50 to 1000 ms late, in time for a patient host"},
    {"late", "the reply comes 3 s late, when the host has given up"},
    {"split", "the reply comes in 2 to 8 pieces, 1 to 50 ms apart"},
    {"doubled", "the reply comes twice"},
    {"dropped-byte", "one byte of the reply is missing"},
    {"doubled-byte", "one byte of the reply comes twice"},
    {"garbled", "1 to 4 neighbouring bytes of the reply are wrong"},
    {"nul", "a NUL byte stands somewhere in the reply"},
    {"missing-cr", "the reply ends without its CR"},
    {"missing-lf", "the reply ends without its LF"},
    {"oversize", "the last field of the reply is 1000 digits longer"},
    {"refusal", "the request is refused: nothing is done, the reply is \"#,E3\""},
    {"axis-error", "one axis of a position reply carries an error, E1 to E9 or F1 to F9"},
    {"cable", "the cable is out for 2 s; the request's reply and all until then is lost"},
    {"reset", "while an axis is driven: the controller resets and is deaf for 1 s"},
}};

namespace {

constexpr std::size_t OversizeDigits = 1000;

std::size_t Index(Fault fault) {
    return static_cast<std::size_t>(fault);
}

void DropByte(std::string& reply, std::uint64_t detail) {
    reply.erase(detail % reply.size(), 1);
}

void DoubleByte(std::string& reply, std::uint64_t detail) {
    const std::size_t place = detail % reply.size();
    reply.insert(place, 1, reply[place]);
}

void Garble(std::string& reply, std::uint64_t detail) {
    const std::size_t begin = detail % reply.size();
    const std::size_t end = std::min(begin + 1 + (detail >> 24U) % 4, reply.size());
    for (std::size_t i = begin; i < end; ++i) {
        // Never 0, which would leave the byte right.
        const std::uint64_t change = 1 + ((detail >> (32 + 8 * (i - begin))) & 0xFFU) % 255;
        reply[i] = static_cast<char>(static_cast<unsigned char>(reply[i]) ^ change);
    }
}

void InsertNul(std::string& reply, std::uint64_t detail) {
    reply.insert(detail % reply.size(), 1, '\0');
}

void DropCr(std::string& reply, std::uint64_t /*detail*/) {
    if (const auto place = reply.rfind('\r'); place != std::string::npos) {
        reply.erase(place, 1);
    }
}

void DropLf(std::string& reply, std::uint64_t /*detail*/) {
    if (const auto place = reply.rfind('\n'); place != std::string::npos) {
        reply.erase(place, 1);
    }
}

void Lengthen(std::string& reply, std::uint64_t /*detail*/) {
    reply.insert(std::min(reply.rfind('\r'), reply.size()), OversizeDigits, '0');
}

using Spoiler = void (*)(std::string& reply, std::uint64_t detail);

/// Applied in this order; what is written to the line end comes before what may destroy it.
constexpr std::array<std::pair<Fault, Spoiler>, 7> Spoilers{{
    {Fault::Oversize, Lengthen},
    {Fault::MissingCr, DropCr},
    {Fault::MissingLf, DropLf},
    {Fault::Garbled, Garble},
    {Fault::DroppedByte, DropByte},
    {Fault::DoubledByte, DoubleByte},
    {Fault::Nul, InsertNul},
}};

Time Between(Time shortest, Time longest, std::uint64_t detail) {
    const auto range = static_cast<std::uint64_t>((longest - shortest).count()) + 1;
    return shortest + Time(static_cast<Time::rep>(detail % range));
}

}  // namespace

std::optional<std::pair<Fault, double>> ParseFault(std::string_view text) {
    const std::size_t equals = text.find('=');
    const auto found = std::ranges::find(FaultTexts, text.substr(0, equals), &FaultText::name);
    if (equals == std::string_view::npos || found == FaultTexts.end()) {
        return std::nullopt;
    }
    double probability = 0;
    const std::string_view number = text.substr(equals + 1);
    const char* const numberEnd = number.data() + number.size();
    const auto [end, error] = std::from_chars(number.data(), numberEnd, probability);
    const bool whole = error == std::errc{} && end == numberEnd;
    if (!whole || !(probability >= 0 && probability <= 1)) {
        return std::nullopt;
    }
    return std::pair(static_cast<Fault>(found - FaultTexts.begin()), probability);
}

void Faults::Set(Fault fault, double probability) {
    probabilities_[Index(fault)] = probability;
}

double Faults::Probability(Fault fault) const {
    return probabilities_[Index(fault)];
}

void Faults::SetSeed(std::uint64_t seed) {
    seed_ = seed;
    numbers_.seed(seed);
}

std::uint64_t Faults::Count(Fault fault) const {
    return counts_[Index(fault)];
}

void Faults::Draw() {
    for (Chance& chance : chances_) {
        // The upper 53 bits as a fraction: the library's own distributions differ by maker.
        chance.chance = static_cast<double>(numbers_() >> 11U) * 0x1p-53;
        chance.detail = numbers_();
    }
}

bool Faults::Happens(Fault fault) {
    const bool happens = chances_[Index(fault)].chance < probabilities_[Index(fault)];
    counts_[Index(fault)] += happens ? 1 : 0;
    return happens;
}

std::uint64_t Faults::Detail(Fault fault) const {
    return chances_[Index(fault)].detail;
}

ScriptedReply Faults::Spoil(std::string reply) {
    for (const auto& [fault, spoil] : Spoilers) {
        if (Happens(fault)) {
            spoil(reply, Detail(fault));
        }
    }
    ScriptedReply spoilt(Happens(Fault::Split) ? Cut(reply) : ScriptedReply(reply).pieces);
    if (Happens(Fault::Doubled)) {
        spoilt.pieces.push_back({Time::zero(), reply});
    }
    Time& delay = spoilt.pieces.front().delay;
    if (Happens(Fault::Delay)) {
        delay += Between(times_.shortestDelay, times_.longestDelay, Detail(Fault::Delay));
    }
    if (Happens(Fault::Late)) {
        delay += times_.late;
    }
    return spoilt;
}

std::vector<ScriptedReply::Piece> Faults::Cut(const std::string& reply) {
    const std::uint64_t detail = Detail(Fault::Split);
    const std::size_t count = 2 + detail % 7;
    const std::size_t length = (reply.size() + count - 1) / count;
    const Time gap = Between(std::chrono::milliseconds(1), times_.longestGap, detail >> 8U);
    std::vector<ScriptedReply::Piece> pieces;
    for (std::size_t at = 0; at < reply.size(); at += length) {
        pieces.push_back({at == 0 ? Time::zero() : gap, reply.substr(at, length)});
    }
    return pieces;
}

}  // namespace simulator
