#pragma once

#include <atomic>
#include <optional>

#include "native/dialog_resources.h"

namespace posix {

/// What a picture shows; nothing for a handle that is none, or was deleted.
std::optional<PictureTemplate> PictureOf(HBITMAP picture);

/// How many pictures are loaded and not deleted.
extern std::atomic<int> loadedPictures;

}  // namespace posix
