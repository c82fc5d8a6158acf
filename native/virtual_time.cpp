#include "native/virtual_time.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "native/clock.h"

namespace posix {

/// A thread runs, or is due at a time, or waits for a word or a lock to change, with the time at
/// which it gives up as the time at which it is due.
struct TimeKeeper::Place {
    std::uint64_t number = 0;
    Deadline due = 0;
    std::uint64_t sequence = 0;
    const std::atomic<std::uint32_t>* word = nullptr;
    std::uint32_t value = 0;
    bool awaitsUnlock = false;
    bool woken = false;
    std::atomic<bool> turn{false};
};

namespace {

constexpr Deadline PerMillisecond = 1'000'000;
// What one look at the clock takes: a thread that only looks must see time pass.
constexpr Deadline LookTime = 100;

[[noreturn]] void Fail(const char* reason) {
    std::fprintf(stderr, "virtual time: %s\n", reason);
    std::terminate();
}

constinit thread_local TimeKeeper::Place* ownPlace = nullptr;

/// All of it belongs to the thread that runs: handing the turn over is the only synchronization.
class VirtualTime final : public TimeKeeper {
  public:
    explicit VirtualTime(const virtual_time::Settings& settings)
        : settings_(settings),
          start_(static_cast<Deadline>(settings.firstTick) * PerMillisecond),
          now_(start_),
          random_(settings.seed) {
        ownPlace = Announce();
    }

    Deadline Now() override { return now_ += LookTime; }

    void SleepUntil(Deadline deadline) override { WaitTurn(deadline); }

    bool WaitUntil(std::atomic<std::uint32_t>& word, std::uint32_t value,
                   Deadline deadline) override {
        if (word.load() != value) {
            return true;
        }
        Place& own = Own();
        own.word = &word;
        own.value = value;
        return WaitTurn(deadline);
    }

    void WakeAll() override {
        WakeIf([](const Place& one) { return one.word != nullptr && *one.word != one.value; });
    }

    bool AwaitUnlock(Deadline deadline) override {
        Own().awaitsUnlock = true;
        return WaitTurn(deadline);
    }

    void Unlocked() override {
        WakeIf([](const Place& one) { return one.awaitsUnlock; });
    }

    void Pause() override {
        if (settings_.pauseEvery != 0 && random_() % settings_.pauseEvery == 0) {
            const auto longest = static_cast<std::uint64_t>(settings_.longestPause.count());
            WaitTurn(now_ + static_cast<Deadline>(random_() % (longest + 1)));
        }
    }

    Place* Announce() override {
        places_.push_back(std::make_unique<Place>());
        Place& place = *places_.back();
        place.number = ++announced_;
        place.due = now_;
        place.sequence = ++sequence_;
        return &place;
    }

    /// The place stays in memory: whoever gave it its last turn may still be about to notify it.
    void Withdraw(Place* place) override {
        const auto at = std::ranges::find(places_, place, &std::unique_ptr<Place>::get);
        former_.push_back(std::move(*at));
        places_.erase(at);
    }

    void Begin(Place* place) override {
        ownPlace = place;
        TakeTurn(*place);
    }

    void End() override {
        Withdraw(&Own());
        ownPlace = nullptr;
        GiveTurn(Next());
    }

    Deadline Elapsed() const { return now_ - start_; }
    std::uint64_t Fingerprint() const { return fingerprint_; }

  private:
    static Place& Own() {
        return ownPlace != nullptr ? *ownPlace : (Fail("a thread from elsewhere waits"), *ownPlace);
    }

    static void TakeTurn(Place& own) {
        own.turn.wait(false);
        own.turn.store(false);
    }

    static void GiveTurn(Place& next) {
        next.turn.store(true);
        next.turn.notify_one();
    }

    template <typename Condition>
    void WakeIf(const Condition& condition) {
        Own();
        for (const auto& one : places_) {
            if (condition(*one) && !one->woken) {
                one->woken = true;
                one->due = now_;
            }
        }
    }

    /// Chooses who goes on, and makes it the time at which it is due.
    Place& Next() {
        Place* next = nullptr;
        for (const auto& one : places_) {
            if (next == nullptr || one->due < next->due ||
                (one->due == next->due && one->sequence < next->sequence)) {
                next = one.get();
            }
        }
        if (next == nullptr || next->due == Never) {
            Fail("all threads wait, and nothing will end it");
        }
        now_ = std::max(now_, next->due);
        constexpr std::uint64_t Prime = 0x100000001B3;
        for (const std::uint64_t part : {next->number, static_cast<std::uint64_t>(now_)}) {
            fingerprint_ = (fingerprint_ ^ part) * Prime;
        }
        return *next;
    }

    /// Lets the others go on until this thread is due or woken; whether it was woken.
    bool WaitTurn(Deadline deadline) {
        Place& own = Own();
        own.due = std::max(deadline, now_);
        own.sequence = ++sequence_;
        Place& next = Next();
        if (&next != &own) {
            GiveTurn(next);
            TakeTurn(own);
        }
        own.word = nullptr;
        own.awaitsUnlock = false;
        return std::exchange(own.woken, false);
    }

    const virtual_time::Settings settings_;
    const Deadline start_;
    Deadline now_;
    std::mt19937_64 random_;
    std::vector<std::unique_ptr<Place>> places_;
    std::vector<std::unique_ptr<Place>> former_;
    std::uint64_t announced_ = 0;
    std::uint64_t sequence_ = 0;
    std::uint64_t fingerprint_ = 0xCBF29CE484222325;
};

VirtualTime* keeper = nullptr;

}  // namespace
}  // namespace posix

void virtual_time::Start(const Settings& settings) {
    // Never ended: threads may still wait while the process ends.
    posix::keeper = new posix::VirtualTime(settings);
    posix::timeKeeper = posix::keeper;
}

std::chrono::nanoseconds virtual_time::Elapsed() {
    return std::chrono::nanoseconds(posix::keeper->Elapsed());
}

std::uint64_t virtual_time::Fingerprint() {
    return posix::keeper->Fingerprint();
}
