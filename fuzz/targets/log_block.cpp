// The log's block when another process scribbles over it: first a text of the module, behind the
// first zero byte what the block holds.

#include <algorithm>
#include <cstring>
#include <string>

#include "log/zbr_log.h"
#include "targets/fuzz_module.h"

namespace {

/// One page more than the block: what the module must never touch lies behind it.
struct Block {
    static constexpr DWORD MappedBytes = 12'288;

    Block() {
        // Made before the module opens it, so it keeps this size.
        const HANDLE map = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              MappedBytes, WIDE("ZBR_LOG_MAPNAME"));
        characters =
            static_cast<WCHAR*>(MapViewOfFile(map, FILE_MAP_ALL_ACCESS, 0, 0, MappedBytes));
    }
    WCHAR* characters;
};

constexpr std::size_t Guard = Block::MappedBytes / sizeof(WCHAR) - LogBlockCharacters;
constexpr WCHAR Untouched = 0x5A5A;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::BringUp();
    static const Block block;
    const auto* const end = std::find(data, data + size, 0);
    const std::string text(data, end);
    const std::size_t left = static_cast<std::size_t>(data + size - end);
    std::u16string before(LogBlockCharacters, 0);
    std::memcpy(before.data(), end, std::min(left, before.size() * sizeof(WCHAR)));
    if (size % 2 == 1) {
        // A block that is full to its last character, or past it.
        std::replace(before.begin(), before.end(), u'\0', u'x');
    }
    std::copy(before.begin(), before.end(), block.characters);
    std::fill_n(block.characters + LogBlockCharacters, Guard, Untouched);

    LogChannel.WriteText(text.c_str());

    const WCHAR* const guard = block.characters + LogBlockCharacters;
    FUZZ_REQUIRE(std::all_of(guard, guard + Guard, [](WCHAR one) { return one == Untouched; }));
    const std::size_t used = before.find(u'\0');
    if (used == before.npos || used + text.size() + 1 > LogBlockCharacters) {
        FUZZ_REQUIRE(std::equal(before.begin(), before.end(), block.characters));
    } else {
        FUZZ_REQUIRE(std::equal(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(used),
                                block.characters));
        FUZZ_REQUIRE(block.characters[used + text.size()] == 0);
    }
    return 0;
}
