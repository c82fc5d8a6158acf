#include "soak/clerks.h"

#include <algorithm>
#include <chrono>

#include "log_viewer/collector.h"
#include "log_viewer/presence.h"
#include "usage/require.h"

namespace soak {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
using simulation::Chance;

/// None of the calls waits for the line; this is for a busy machine.
constexpr auto LongestCall = 1s;

template <typename Call>
void Timed(Call call, const char* what) {
    const auto start = Clock::now();
    call();
    Require(Clock::now() - start < LongestCall, std::string(what) + " takes too long");
}

}  // namespace

Clerks::Clerks(host_tool::ModuleLibrary& module, Tally& tally, Chance& chance)
    : module_(module), tally_(tally) {
    for (const Work work : {&Clerks::Read, &Clerks::Read, &Clerks::Read, &Clerks::TakeLatches,
                            &Clerks::SetLamps, &Clerks::ViewLog}) {
        Employ(work, chance);
    }
}

Clerks::~Clerks() {
    stop_ = true;
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void Clerks::Employ(Work work, Chance& chance) {
    threads_.emplace_back([this, work, own = Chance(chance.Seed())]() mutable {
        while (!stop_) {
            (this->*work)(own);
        }
    });
}

void Clerks::Rest(std::int64_t milliseconds) const {
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!stop_ && Clock::now() < end) {
        std::this_thread::sleep_for(std::min<Clock::duration>(end - Clock::now(), 50ms));
    }
}

void Clerks::Read(Chance& chance) {
    OviskData data;
    Timed([&] { module_.ZbOvisk_GetOviskData(data); }, "a reading of the record");
    ++tally_.readings;
    Rest(chance.Between(1, 10));
}

void Clerks::TakeLatches(Chance& chance) {
    bool any = false;
    bool emergency = false;
    bool lamps = false;
    Timed([&] { module_.ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps); }, "the latches");
    tally_.latches += any || lamps ? 1U : 0U;
    Rest(chance.Between(10, 200));
}

void Clerks::SetLamps(Chance& chance) {
    const auto lamp = static_cast<std::int32_t>(chance.Between(0, 10));
    for (std::int64_t left = chance.Between(1, 20); left > 0; --left) {
        const auto value = static_cast<std::int32_t>(chance.Between(0, 255));
        Timed([&] { module_.ZbOvisk_SetLight(lamp, value); }, "a lamp");
        ++tally_.lamps;
    }
    Rest(chance.Between(50, 500));
}

void Clerks::ViewLog(Chance& chance) {
    Rest(chance.Between(200, 3000));
    const log_viewer::Presence presence;
    log_viewer::Channel channel;
    log_viewer::LineStore store(1000);
    log_viewer::Collector collector(channel, store, nullptr);
    Rest(chance.Between(200, 3000));
    Require(collector.Stop(), "the viewer does not get the log's mutex");
    ++tally_.viewers;
}

}  // namespace soak
