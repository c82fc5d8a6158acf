#include "exchange_bench.h"

#include "controller/controller_line.h"
#include "link/exchange.h"

void EnsureExchangeLine(const Pace& pace) {
    static test_support::SimulatedController controller({.bitsPerSecond = pace.bitsPerSecond});
    PlaceFarOut(*controller.operator->());
    std::string reply;
    [[maybe_unused]] static const bool opened = ExchangeLocked(ExchangeRequest, reply);
}

namespace {

class Module {
  public:
    explicit Module(const Pace& /*pace*/) {}
    double Exchange() {
        return SecondsOf([this] { return ExchangeLocked(ExchangeRequest, reply_); });
    }

  private:
    std::string reply_;
};
[[maybe_unused]] const bool registered = RegisterExchange<Module>("module");

}  // namespace
