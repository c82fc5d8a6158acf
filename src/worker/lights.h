#pragma once

#include <cstdint>

/// Posts a lamp's brightness. `lamp`: 0 to 10, anything else is refused with false. `value`: 0 to
/// 255 on the host's scale; values outside are taken as the nearest limit. True says that the
/// command is posted, nothing about the controller. Any thread; never waits for the line.
bool SetLight(std::int32_t lamp, std::int32_t value);

/// The same for a lamp that is in range: scales the value to the controller's 0 to 10000 and posts.
bool MyPostLight(std::int32_t lamp, std::int32_t value);
