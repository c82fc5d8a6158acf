// The serial collector and the test of a reply's form: any bytes, in any pieces, at any time.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>

#include "link/protocol.h"
#include "native/virtual_time.h"
#include "targets/fuzz_module.h"

namespace {

std::vector<fuzz::Piece> Pieces(FuzzedDataProvider& input) {
    std::vector<fuzz::Piece> pieces;
    while (input.remaining_bytes() > 0 && pieces.size() < 200) {
        const auto delay = std::chrono::milliseconds(input.ConsumeIntegral<std::uint8_t>() * 2);
        pieces.push_back({delay, input.ConsumeRandomLengthString(1024)});
    }
    return pieces;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::chrono::milliseconds LongestExchange(3800);
    fuzz::Peer& peer = fuzz::BringUp();
    FuzzedDataProvider input(data, size);
    const std::vector<fuzz::Piece> pieces = Pieces(input);
    peer.answer = [&](const std::string&) { return pieces; };
    ExchangeReplyBuffer reply{};
    const auto start = virtual_time::Elapsed();
    if (ExchangeChecked(PositionQuery.request, PositionQuery.prefix, reply)) {
        const std::string text(reply.data());
        FUZZ_REQUIRE(text.starts_with(PositionQuery.prefix) && text.ends_with("\r\n"));
        FUZZ_REQUIRE(text.size() > std::strlen(PositionQuery.prefix) + 2);
    }
    FUZZ_REQUIRE(virtual_time::Elapsed() - start <= LongestExchange);
    peer.Forget();
    return 0;
}
