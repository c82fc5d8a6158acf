#include <algorithm>
#include <atomic>
#include <cstring>
#include <iostream>
#include <string>
#include <thread>
#include <utility>

#include "controller/controller_line.h"
#include "controller/log_tap.h"
#include "host/module_library.h"
#include "log/zbr_log.h"
#include "peers/roles.h"
#include "support/machine.h"

namespace peers {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// More than this and the numbered lines wait for a viewer, so that none of them finds no room.
constexpr std::size_t BusyBlock = 2000;
/// Commands that the module does not know; it logs their numbers.
constexpr std::uint32_t FirstNumber = 1000;
constexpr int LinesToGo = 5;
constexpr std::size_t BlockBytes = LogBlockCharacters * sizeof(WCHAR);
constexpr std::size_t PageBytes = 4096;
constexpr int Mark = 0x5A;

long long MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

void Raise(std::atomic<long long>& highest, long long value) {
    highest = std::max(highest.load(), value);
}

class LogHost {
  public:
    LogHost() {
        module_.OVISK_ZbrCmd(OviskCmd_Startup, 0);
        block_.Take();  // The numbered lines are to stand alone.
        logger_ = std::thread([this] { Log(); });
        reader_ = std::thread([this] { Read(); });
    }
    ~LogHost() {
        stop_ = true;
        logger_.join();
        reader_.join();
        const auto start = Clock::now();
        module_.OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
        std::cout << "stopped " << MillisecondsSince(start) << std::endl;
    }
    LogHost(const LogHost&) = delete;
    LogHost& operator=(const LogHost&) = delete;

    std::string Do(const std::string& command) {
        if (command == "held") {
            return MutexIsHeld() ? "held" : "free";
        }
        if (command == "go") {
            return Go();
        }
        if (command == "refuse") {
            const auto start = Clock::now();
            const bool moved = module_.ZbOvisk_CncGotoAbsoluteNotifyWorld(1e9, 0, 0, nullptr, 0);
            return (moved ? "moved " : "refused ") + std::to_string(MillisecondsSince(start));
        }
        if (command == "state") {
            return std::to_string(lines_) + ' ' + std::to_string(slowestLine_.exchange(0)) + ' ' +
                   std::to_string(slowestReading_.exchange(0)) + ' ' +
                   std::to_string(longestStale_.exchange(0));
        }
        if (command == "mark") {
            std::memset(Behind(), Mark, BehindBytes());
            return "ok";
        }
        if (command == "marked") {
            return std::all_of(Behind(), Behind() + BehindBytes(),
                               [](char byte) { return byte == Mark; })
                       ? "yes"
                       : "no";
        }
        return "unknown";
    }

  private:
    char* Behind() { return reinterpret_cast<char*>(block_.Characters()) + BlockBytes; }
    static constexpr std::size_t BehindBytes() { return PageBytes - BlockBytes % PageBytes; }

    std::size_t TextLength() {
        const volatile WCHAR* const text = block_.Characters();
        std::size_t length = 0;
        while (length < LogBlockCharacters && text[length] != 0) {
            ++length;
        }
        return length;
    }

    bool MutexIsHeld() {
        // This process's own threads keep it for microseconds, unless the machine is very busy.
        for (const DWORD wait : {0U, 60U, 60U}) {
            const DWORD result = WaitForSingleObject(block_.Mutex(), wait);
            if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) {
                ReleaseMutex(block_.Mutex());
                return false;
            }
        }
        return true;
    }

    std::string Go() {
        const auto start = Clock::now();
        const std::uint64_t before = lines_;
        linesToGo_ = LinesToGo;
        while (lines_ < before + LinesToGo) {
            if (Clock::now() - start > 30s) {
                return "stuck";
            }
            std::this_thread::sleep_for(1ms);
        }
        return "went " + std::to_string(MillisecondsSince(start));
    }

    void Log() {
        while (!stop_) {
            if (linesToGo_ <= 0 && TextLength() > BusyBlock) {
                std::this_thread::sleep_for(1ms);
                continue;
            }
            const auto start = Clock::now();
            module_.OVISK_ZbrCmd(FirstNumber + static_cast<std::uint32_t>(lines_), 0);
            Raise(slowestLine_, MillisecondsSince(start));
            ++lines_;
            --linesToGo_;
        }
    }

    /// Moves the stage and looks how its position comes through.
    void Read() {
        std::int32_t last = 0;
        auto lastChange = Clock::now();
        for (double place = 100; !stop_; place += 100) {
            controller_->With([&](simulator::StageModel& stage) { stage.Place({place, 0, 0}); });
            const auto start = Clock::now();
            OviskData data;
            module_.ZbOvisk_GetOviskData(data);
            Raise(slowestReading_, MillisecondsSince(start));
            if (std::exchange(last, data.cposmr.x) != data.cposmr.x) {
                lastChange = Clock::now();
            }
            Raise(longestStale_, MillisecondsSince(lastChange));
            std::this_thread::sleep_for(2ms);
        }
    }

    test_support::SimulatedController controller_;
    test_support::LogBlock block_;
    host_tool::ModuleLibrary module_{OVISK_LIBRARY};
    std::atomic<bool> stop_{false};
    std::atomic<std::uint64_t> lines_{0};
    std::atomic<int> linesToGo_{0};
    std::atomic<long long> slowestLine_{0};
    std::atomic<long long> slowestReading_{0};
    std::atomic<long long> longestStale_{0};
    std::thread logger_;
    std::thread reader_;
};

}  // namespace

int HostTheLog(bool serialLog) {
    test_support::WriteSettings(serialLog ? "[Ovisk]\nCmdPoll=10\nSerialLog=1\n"
                                          : "[Ovisk]\nCmdPoll=10\n");
    LogHost host;
    std::cout << "ready" << std::endl;
    for (std::string command; std::getline(std::cin, command) && command != "quit";) {
        std::cout << host.Do(command) << std::endl;
    }
    return 0;
}

}  // namespace peers
