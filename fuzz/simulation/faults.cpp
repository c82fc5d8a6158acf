#include "simulation/faults.h"

#include <algorithm>
#include <array>

namespace simulation {
namespace {

std::string Without(std::string reply, std::string_view end) {
    const std::size_t at = reply.rfind(end);
    return at == std::string::npos ? reply : reply.erase(at, end.size());
}

}  // namespace

std::string Faults::Hear(const std::string& request) {
    if (!chance_.Percent(percent_) || !chance_.OneIn(5)) {
        return request;
    }
    if (chance_.OneIn(2)) {
        Count(Fault::Lost);
        return {};
    }
    Count(Fault::Misheard);
    std::string heard = request;
    heard[PlaceIn(heard)] = static_cast<char>(chance_.Between(0, 255));
    return heard;
}

std::vector<Piece> Faults::Spoil(const std::string& reply) {
    spoiltBytes_ = false;
    if (!chance_.Percent(percent_)) {
        return {{Time::zero(), reply}};
    }
    constexpr std::array Times{Fault::Delay, Fault::Late, Fault::Split};
    const auto fault = static_cast<Fault>(
        chance_.Between(static_cast<int>(Fault::Silence), static_cast<int>(Fault::Refusal)));
    const bool spoilsTimes = std::ranges::count(Times, fault) != 0;
    Count(fault);
    if (fault == Fault::Silence) {
        return {};
    }
    const std::string bytes = spoilsTimes ? reply : SpoilBytes(fault, reply);
    spoiltBytes_ = bytes != reply;
    if (!spoilsTimes && !chance_.OneIn(5)) {
        return {{Time::zero(), bytes}};
    }
    const Fault time = spoilsTimes ? fault : chance_.Of(Times);
    report_.faults[static_cast<std::size_t>(time)] += spoilsTimes ? 0 : 1;
    return SpoilTimes(time, bytes);
}

std::vector<Piece> Faults::SpoilTimes(Fault fault, const std::string& reply) {
    if (fault == Fault::Delay) {
        return {{Milliseconds(chance_.Between(10, 2600)), reply}};
    }
    if (fault == Fault::Late) {
        return {{Milliseconds(chance_.Between(2600, 7000)), reply}};
    }
    std::vector<Piece> pieces{{Time::zero(), {}}};
    for (const char byte : reply) {
        if (chance_.OneIn(6)) {
            // Never just as long as the silence that ends a read.
            pieces.push_back(
                {std::chrono::microseconds(chance_.Between(100, 15'000) * 10 + 7), {}});
        }
        pieces.back().bytes += byte;
    }
    return pieces;
}

std::string Faults::SpoilBytes(Fault fault, std::string reply) {
    const std::size_t at = PlaceIn(reply);
    switch (fault) {
        case Fault::Dropped:
            return reply.erase(at, Several(1, 12));
        case Fault::Doubled:
            return chance_.OneIn(2) ? reply + reply : reply.insert(at, 1, reply[at]);
        case Fault::Garbled:
            for (auto count = chance_.Between(1, 3); count > 0; --count) {
                reply[PlaceIn(reply)] = static_cast<char>(chance_.Between(1, 255));
            }
            return reply;
        case Fault::NoCr:
            return Without(std::move(reply), "\r");
        case Fault::NoLf:
            return Without(std::move(reply), "\n");
        case Fault::NoLineEnd:
            return Without(std::move(reply), "\r\n");
        case Fault::Nul:
            return reply.insert(at, Several(1, 3), '\0');
        case Fault::Oversize: {
            const char filler = chance_.Of(std::string_view(",0x"));
            return reply.insert(reply.size() - 2, Several(200, 3000), filler);
        }
        default:
            return Refuse(reply);
    }
}

std::string Faults::Refuse(const std::string& reply) {
    const std::string name = reply.substr(0, reply.find('=') + 1);
    return name + "#,E3" + (chance_.OneIn(2) ? ",0,0,0,0,0,0,0,0,0,0,0,0,0,0" : "") + "\r\n";
}

}  // namespace simulation
