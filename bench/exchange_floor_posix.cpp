#include "bare_line_posix.h"
#include "exchange_bench.h"
#include "native/machine.h"

namespace {

class Floor {
  public:
    explicit Floor(const Pace& /*pace*/) {}
    double Exchange() {
        return SecondsOf([this] { return line_.Exchange(ExchangeRequest); });
    }

  private:
    // It and the module's port do not disturb each other: one of them is used at a time.
    BareLine line_{MachineRoot() + "/dosdevices/com3"};
};
[[maybe_unused]] const bool registered = RegisterExchange<Floor>("floor");

}  // namespace
