#include "worker/lights.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "link/command_queue.h"
#include "link/protocol.h"
#include "log/zbr_log.h"
#include "settings/settings.h"

namespace {

constexpr std::uint32_t LastLamp = 10;
constexpr double HostFull = 255.0;
constexpr double ControllerFull = 10000.0;

/// The controller's value, 0 to 10000, of a value on the host's scale. Held to its range before it
/// is rounded: a long has 32 bits on Windows and does not hold every product.
long ControllerValue(std::int32_t value) {
    return std::lround(std::clamp(value / HostFull * ControllerFull, 0.0, ControllerFull));
}

}  // namespace

bool SetLight(std::int32_t lamp, std::int32_t value) {
    return static_cast<std::uint32_t>(lamp) <= LastLamp && MyPostLight(lamp, value);
}

bool MyPostLight(std::int32_t lamp, std::int32_t value) {
    const std::string text = LampRequest + std::to_string(lamp) + "=" +
                             std::to_string(ControllerValue(value)) + RequestEnd;
    if (SerialLogEnabled.load() != 0) {
        WriteLine("MyPostLight value=", Decimal{value}, " cmd= ", text);
    }
    return PostCommand(static_cast<std::uint32_t>(lamp), text);
}
