// The five replies: any bytes as the whole reply to each query. The first byte chooses the query.

#include <cmath>

#include "homing/homing_procedure.h"
#include "replies/queries.h"
#include "targets/fuzz_module.h"

namespace {

/// A query either gives a whole record or says why not.
template <typename Record>
void Ask(bool (*query)(Record&)) {
    Record record;
    const bool good = query(record);
    FUZZ_REQUIRE(record.replyError == (good ? 0 : 1));
    FUZZ_REQUIRE(!good || record.replyErrorText.empty());
}

void AskPosition() {
    CposmrReply record;
    if (MyQueryCposmr(record)) {
        FUZZ_REQUIRE(record.replyError == 0);
        FUZZ_REQUIRE((record.xError == 1) == !record.xErrorText.empty());
        FUZZ_REQUIRE((record.yError == 1) == !record.yErrorText.empty());
        FUZZ_REQUIRE((record.zError == 1) == !record.zErrorText.empty());
    }
}

void AskHoming() {
    HomingCondition condition;
    if (!condition.Query()) {
        return;
    }
    for (std::size_t number = 2; number <= YStatusField; ++number) {
        const char* const field = condition.Field(number);
        FUZZ_REQUIRE(field == nullptr || condition.Field(number - 1) != nullptr);
        FUZZ_REQUIRE(field == nullptr || field[0] != 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    fuzz::Peer& peer = fuzz::BringUp();
    const std::string reply(reinterpret_cast<const char*>(data) + 1, size - 1);
    peer.answer = [&](const std::string&) { return std::vector<fuzz::Piece>{{{}, reply}}; };
    switch (data[0] % 5) {
        case 0:
            AskPosition();
            break;
        case 1:
            Ask(MyQuerySswc);
            break;
        case 2:
            Ask(MyQueryLabr);
            break;
        case 3:
            Ask(MyQueryMcnd);
            break;
        default:
            AskHoming();
    }
    peer.Forget();
    return 0;
}
