#include "replies/position.h"

#include <atomic>

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
    std::array<char*, 4> tokens{};
    if (!QueryTokens(PositionQuery, ListDelimiters<4>('\r'), record, buffer, tokens) ||
        !AcceptFields(tokens, record, buffer)) {
        return false;
    }
    const auto [name, x, y, z] = tokens;
    ReadAxis(x, record.x, record.xError, record.xErrorText);
    ReadAxis(y, record.y, record.yError, record.yErrorText);
    ReadAxis(z, record.z, record.zError, record.zErrorText);
    record.replyError = 0;
    return true;
}
