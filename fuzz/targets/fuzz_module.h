#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "native/local_port.h"

/// The module's rooms for a fuzzer: brought up once, on a clock that jumps, with a machine of its
/// own and a peer at its port. All on the fuzzer's one thread, unless a target makes a worker.
namespace fuzz {

/// Bytes that come so long after what was sent before them.
struct Piece {
    std::chrono::milliseconds delay{0};
    std::string bytes;
};

/// What stands at the port: gives each request to `answer` and sends what that says.
class Peer : public LocalPeer {
  public:
    void Receive(std::string_view bytes, std::chrono::nanoseconds now) override;
    std::string TakeDue(std::size_t most, std::chrono::nanoseconds now) override;
    std::optional<std::chrono::nanoseconds> NextDue() override;

    /// What was on its way is lost.
    void Forget() { outgoing_.clear(); }

    std::function<std::vector<Piece>(const std::string& request)> answer;

  private:
    struct Outgoing {
        std::chrono::nanoseconds due;
        std::string bytes;
    };

    std::deque<Outgoing> outgoing_;
};

/// Brings everything up at the first call. Leaves the machine's folder to `fuzz/run`.
Peer& BringUp();

/// The path of the module's settings file.
std::string SettingsPath();

}  // namespace fuzz

/// Ends the process with a message, for the fuzzer to see, unless the condition holds.
#define FUZZ_REQUIRE(condition)                                                  \
    do {                                                                         \
        if (!(condition)) {                                                      \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                        \
        }                                                                        \
    } while (false)
