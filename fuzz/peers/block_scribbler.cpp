#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <random>

#include "controller/log_tap.h"
#include "log/zbr_log.h"
#include "peers/roles.h"

namespace peers {

int ScribbleOverTheBlock() {
    constexpr std::size_t BlockBytes = LogBlockCharacters * sizeof(WCHAR);
    test_support::LogBlock block;
    auto* const bytes = reinterpret_cast<volatile std::uint8_t*>(block.Characters());
    std::mt19937 random(std::random_device{}());
    std::cout << "ready" << std::endl;
    const auto start = std::chrono::steady_clock::now();
    // Lives no longer than anybody could want it to.
    while (std::chrono::steady_clock::now() - start < std::chrono::minutes(10)) {
        const std::size_t begin = random() % 4 == 0 ? 0 : random() % BlockBytes;
        const std::size_t length = random() % 8 == 0 ? BlockBytes : random() % 64;
        // Every other stretch has no zero in it, so that the text has no end for a while.
        const std::uint8_t least = random() % 2 == 0 ? 1 : 0;
        for (std::size_t i = begin; i < std::min(begin + length, BlockBytes); ++i) {
            bytes[i] = static_cast<std::uint8_t>(random() | least);
        }
    }
    return 0;
}

}  // namespace peers
