#pragma once

#include <string>

#include "host/zb_ovisk.h"

namespace host_tool {

/// The three positions, with an axis's error code in the place of its number.
std::string PositionText(const CposmrReply& position);
/// The switches that have a name.
std::string SwitchText(const SswcReply& switches);
/// The six lamp values.
std::string LampText(const LabrReply& lamps);

}  // namespace host_tool
