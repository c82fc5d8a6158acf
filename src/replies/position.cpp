#include <atomic>

#include "replies/queries.h"
#include "replies/query.h"

namespace {

/// What the numbers of axes in error are filled from, so that no stale position can be taken for a
/// fresh one.
std::atomic<std::uint32_t> positionSequence{0};

void ReadAxis(const char* field, std::int32_t& number, std::uint8_t& error, std::string& text) {
    error = field[0] == 'E' || field[0] == 'F' ? 1 : 0;
    if (error != 0) {
        text = field;
    } else {
        number = FieldNumber(field);
    }
}

}  // namespace

bool MyQueryCposmr(CposmrReply& record) {
    const std::uint32_t filler = positionSequence.fetch_add(3, std::memory_order_relaxed);
    record.x = static_cast<std::int32_t>(filler);
    record.y = static_cast<std::int32_t>(filler + 1);
    record.z = static_cast<std::int32_t>(filler + 2);
    ExchangeReplyBuffer buffer{};
    Tokens<3> tokens{};
    if (!QueryTokens<3>(PositionQuery, '\r', record, buffer, tokens)) {
        return false;
    }
    ReadAxis(tokens[1], record.x, record.xError, record.xErrorText);
    ReadAxis(tokens[2], record.y, record.yError, record.yErrorText);
    ReadAxis(tokens[3], record.z, record.zError, record.zErrorText);
    return true;
}
