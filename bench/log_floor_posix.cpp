#include <emmintrin.h>
#include <pthread.h>

#include <array>
#include <bit>
#include <cstring>

#include "log_bench.h"

namespace {

/// The bare channel: a mutex that survives its owner, and a block.
class BareChannel {
  public:
    BareChannel() {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
        pthread_mutex_init(&mutex_, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }

    WCHAR* Characters() { return block_.data(); }

    void Write(const char* text) {
        const std::size_t length = std::strlen(text);
        pthread_mutex_lock(&mutex_);
        const std::size_t used = Length();
        if (used + length < LogBlockCharacters) {
            std::copy_n(text, length, block_.data() + used);
            block_[used + length] = 0;
        }
        pthread_mutex_unlock(&mutex_);
    }

  private:
    static constexpr std::size_t PerVector = 8;

    std::size_t Length() const {
        const __m128i zero = _mm_setzero_si128();
        for (std::size_t start = 0; start < LogBlockCharacters; start += PerVector) {
            const auto* const vector = reinterpret_cast<const __m128i*>(block_.data() + start);
            const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_load_si128(vector), zero));
            if (zeros != 0) {
                return start +
                       static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(zeros)) / 2);
            }
        }
        return LogBlockCharacters;
    }

    pthread_mutex_t mutex_{};
    alignas(16) std::array<WCHAR, LogBlockCharacters> block_{};
};
static_assert(LogBlockCharacters % 8 == 0);

[[maybe_unused]] const bool registered = RegisterLogFloor<BareChannel>();

}  // namespace
