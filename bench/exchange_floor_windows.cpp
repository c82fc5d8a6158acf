#include "exchange_bench.h"

namespace {

/// The waits that every exchange has: 10 ms of pause and 20 ms of idle line.
class Floor {
  public:
    explicit Floor(const Pace& /*pace*/) {}
    double Exchange() { return 0.030; }
};
[[maybe_unused]] const bool registered = RegisterExchange<Floor>("floor");

}  // namespace
