#include <cstring>
#include <cwchar>

#include "log_bench.h"

namespace {

/// The bare channel: a mutex of the system and a block.
class BareChannel {
  public:
    WCHAR* Characters() { return block_; }

    void Write(const char* text) {
        const std::size_t length = std::strlen(text);
        WaitForSingleObject(mutex_, INFINITE);
        const std::size_t used = wcsnlen(block_, LogBlockCharacters);
        if (used + length < LogBlockCharacters) {
            std::copy_n(text, length, block_ + used);
            block_[used + length] = 0;
        }
        ReleaseMutex(mutex_);
    }

  private:
    HANDLE mutex_ = CreateMutexW(nullptr, FALSE, L"ovisk-bench");
    WCHAR block_[LogBlockCharacters] = {};
};
[[maybe_unused]] const bool registered = RegisterLogFloor<BareChannel>();

}  // namespace
