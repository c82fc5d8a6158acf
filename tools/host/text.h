#pragma once

#include <string>

#include "host/zb_ovisk_plain.h"

namespace host_tool {

/// The three positions, with an axis's error code in the place of its number.
std::string PositionText(const ZbOviskStage& stage);
/// The switches that have a name.
std::string SwitchText(const ZbOviskStage& stage);
/// The six lamp values.
std::string LampText(const ZbOviskStage& stage);
/// Milliseconds as seconds: "12.3 s".
std::string SecondsText(std::uint64_t milliseconds);

}  // namespace host_tool
