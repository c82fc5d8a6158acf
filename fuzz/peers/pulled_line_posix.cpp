#include <CLI/CLI.hpp>
#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "controller/log_tap.h"
#include "host/module_library.h"
#include "peers/line_end_posix.h"
#include "resources/resource_ids.h"
#include "support/dialog_driver.h"
#include "support/machine.h"
#include "usage/require.h"
#include "usage/usage.h"

// Pulls the module's line at each byte of an exchange and replaces it. Nothing closes the port but
// the panel's button and a stop, so until then the module has to bear the dead one.

namespace {

using namespace peers;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

struct Options {
    std::size_t lane = 0;
    std::size_t lanes = 1;
    unsigned milliseconds = 1000;
    unsigned poll = 80;
    bool restart = false;
};

constexpr double HighestLoad = 0.05;
constexpr auto HighestReading = 200ms;
constexpr auto HighestMove = 2s;
constexpr auto HighestStop = 2500ms;
constexpr auto Silence = 300ms;

std::string Text(const PullPlace& place) {
    return std::to_string(place.bytes) + " bytes of the " +
           (place.inReply ? place.whenRead ? "reply, read" : "reply" : "request");
}

std::vector<PullPlace> AllPlaces(std::size_t replyLength) {
    std::vector<PullPlace> places;
    for (std::size_t bytes = 1; bytes <= PositionQuery.size(); ++bytes) {
        places.push_back({.inReply = false, .bytes = bytes, .whenRead = false});
    }
    for (std::size_t bytes = 1; bytes <= replyLength; ++bytes) {
        places.push_back({.inReply = true, .bytes = bytes, .whenRead = false});
        places.push_back({.inReply = true, .bytes = bytes, .whenRead = true});
    }
    return places;
}

class Host {
  public:
    explicit Host(const Options& options) : options_(options) {
        test_support::WriteSettings("[Ovisk]\nCmdPoll=" + std::to_string(options.poll) + "\n" +
                                    (options.restart ? "" : "Dialog=1\n"));
        Begin();
    }
    ~Host() { End(); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void Pull(const PullPlace& place) {
        place_ = place;
        PlaceStage();
        Require(line_.PullAt(place), "no exchange came");
        BearTheDeadLine();
        if (options_.restart) {
            End();
            Replace();
            Begin();
        } else {
            Replace();
            std::this_thread::sleep_for(Silence);
            Require(line_.BytesHeard() == 0, "the module opened the port by itself");
            Require(Position() == seen_, "the last good values were not kept");
            test_support::DialogDriver("Mitutoyo QI").PressAndWait(IDC_CLOSE_COMM);
        }
        Require(test_support::Eventually([this] { return Position() == placed_; }, 10s),
                "the module does not talk again");
        seen_ = placed_;
    }

    double HighestLoadSeen() const { return highestLoad_; }
    LineEnd& Line() { return line_; }

  private:
    void Require(bool kept, const std::string& what) const {
        ::Require(kept, what + ", pulled at " + Text(place_));
    }

    void Begin() {
        module_ = std::make_unique<host_tool::ModuleLibrary>(OVISK_LIBRARY);
        over_ = false;
        // The panel, if there is one, is of the thread that starts the module.
        owner_ = std::thread([this] {
            module_->OVISK_ZbrCmd(OviskCmd_Startup, 0);
            test_support::RunMessages([this] { return over_.load(); }, 3600s);
        });
    }

    void End() {
        const auto start = Clock::now();
        module_->OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
        Require(Clock::now() - start < HighestStop, "the stop took too long");
        over_ = true;
        owner_.join();
        std::this_thread::sleep_for(50ms);  // For the worker's last steps out of the library.
        module_.reset();
    }

    /// All three axes at a new place, always with as many digits.
    void PlaceStage() {
        placed_ = 1000 + (placed_ + 1) % 1000;
        line_.Place(placed_ * 100, placed_ * 100, placed_ * 100);
        Require(test_support::Eventually([this] { return Position() == placed_; }, 10s),
                "no position came");
        seen_ = placed_;
    }

    /// A new line, behind which the stage stands elsewhere.
    void Replace() {
        ++placed_;
        line_.Place(placed_ * 100, placed_ * 100, placed_ * 100);
        line_.Replace();
    }

    std::int32_t Position() {
        OviskData data;
        const auto start = Clock::now();
        module_->ZbOvisk_GetOviskData(data);
        Require(Clock::now() - start < HighestReading, "a reading took too long");
        return data.cposmr.x;
    }

    void BearTheDeadLine() {
        // What the exchange under way still does is not yet what the dead line costs.
        std::this_thread::sleep_for(100ms);
        const auto start = Clock::now();
        const auto used = ProcessorTime();
        while (Clock::now() - start < std::chrono::milliseconds(options_.milliseconds)) {
            Require(Position() == seen_, "the last good values were not kept");
            std::this_thread::sleep_for(20ms);
        }
        const double load = std::chrono::duration<double>(ProcessorTime() - used) /
                            std::chrono::duration<double>(Clock::now() - start);
        highestLoad_ = std::max(highestLoad_, load);
        Require(load < HighestLoad, "it takes " + std::to_string(load) + " of a processor");
        Require(module_->ZbOvisk_SetLight(1, 100), "a lamp was not taken");
        const auto move = Clock::now();
        Require(!module_->ZbOvisk_CncGotoAbsoluteNotifyWorld(0.1, 0.1, 0.1, nullptr, 0),
                "a move was accepted");
        Require(Clock::now() - move < HighestMove, "a move's refusal took too long");
    }

    const Options& options_;
    LineEnd line_;
    PullPlace place_{};
    std::int32_t placed_ = 1000;
    std::int32_t seen_ = 0;
    double highestLoad_ = 0;
    std::unique_ptr<host_tool::ModuleLibrary> module_;
    std::thread owner_;
    std::atomic<bool> over_{false};
};

int Run(const Options& options) {
    Host host(options);
    host.Line().Place(100'000, 100'000, 100'000);
    const std::vector<PullPlace> places = AllPlaces(host.Line().ReplyLength());
    std::size_t pulled = 0;
    for (std::size_t i = options.lane; i < places.size(); i += options.lanes) {
        host.Pull(places[i]);
        ++pulled;
    }
    std::printf("%zu pulled, at most %.1f %%\n", pulled, 100 * host.HighestLoadSeen());
    return 0;
}

}  // namespace

int main(int argc, char** argv) try {
    Options options;
    CLI::App app("Pulls the module's line at each byte of an exchange of the position.");
    app.add_option("--lane", options.lane, "the first of the places to pull at");
    app.add_option("--lanes", options.lanes, "pulls at every so manieth place");
    app.add_option("--milliseconds", options.milliseconds, "how long a dead line is looked at")
        ->capture_default_str();
    app.add_option("--poll", options.poll, "the setting CmdPoll")->capture_default_str();
    app.add_flag("--restart", options.restart, "starts anew, instead of the panel's button");
    CLI11_PARSE(app, argc, argv);
    return Run(options);
} catch (const std::exception& failure) {
    std::fprintf(stderr, "pulled_line: %s\n", failure.what());
    return EXIT_FAILURE;
}
