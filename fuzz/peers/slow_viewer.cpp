#include <iostream>
#include <string>

#include "log/zbr_log.h"
#include "log_viewer/channel.h"
#include "log_viewer/presence.h"
#include "peers/roles.h"

namespace peers {
namespace {

constexpr std::size_t Portion = 250;
constexpr DWORD MutexMilliseconds = 1000;
constexpr int LongestLife = 600'000;

/// Copies the text a portion at a time; gives it back under the mutex.
void Take(const log_viewer::OwnedHandle& mutex, volatile WCHAR* block) {
    const DWORD wait = WaitForSingleObject(mutex.get(), MutexMilliseconds);
    if (wait != WAIT_OBJECT_0 && wait != WAIT_ABANDONED) {
        return;
    }
    std::u16string copy;
    while (copy.size() < LogBlockCharacters && block[copy.size()] != 0) {
        copy += static_cast<char16_t>(block[copy.size()]);
        if (copy.size() % Portion == 0) {
            Sleep(1);
        }
    }
    block[0] = 0;
    Sleep(1);
    ReleaseMutex(mutex.get());
}

}  // namespace

int ViewSlowly() {
    const log_viewer::ViewerSeat seat;
    if (!seat) {
        std::cout << "another viewer runs" << std::endl;
        return 1;
    }
    const log_viewer::Presence presence;
    const log_viewer::OwnedHandle map(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                           LogBlockCharacters * sizeof(WCHAR), WIDE("ZBR_LOG_MAPNAME")));
    const log_viewer::OwnedHandle mutex(CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME")));
    auto* const block =
        static_cast<WCHAR*>(MapViewOfFile(map.get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, 0));
    std::cout << "ready" << std::endl;
    for (int left = LongestLife; left > 0; --left) {
        Take(mutex, block);
    }
    return 0;
}

}  // namespace peers
