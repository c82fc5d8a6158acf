#include "replies/switches_and_lamps.h"

#include "replies/query.h"

namespace {

constexpr std::size_t SwitchTokens = 17;
constexpr std::size_t LampTokens = 8;

}  // namespace

bool MyQuerySswc(SswcReply& record) {
    ExchangeReplyBuffer buffer{};
    std::array<char*, SwitchTokens> tokens{};
    if (!QueryTokens(SwitchQuery, ListDelimiters<SwitchTokens>('\r'), record, buffer, tokens) ||
        !AcceptFields(tokens, record, buffer)) {
        return false;
    }
    record.EMER_SW = FieldNumber(tokens[1]);
    record.sswc2 = FieldNumber(tokens[2]);
    record.SW_Y = FieldNumber(tokens[3]);
    record.sswc4 = FieldNumber(tokens[4]);
    record.DATA_SW = FieldNumber(tokens[5]);
    record.sswc6 = FieldNumber(tokens[6]);
    record.sswc7 = FieldNumber(tokens[7]);
    record.sswc8 = FieldNumber(tokens[8]);
    record.sswc9 = FieldNumber(tokens[9]);
    record.sswc10 = FieldNumber(tokens[10]);
    record.sswc11 = FieldNumber(tokens[11]);
    record.FOOT_SW = FieldNumber(tokens[12]);
    record.MEAS_MODE = FieldNumber(tokens[13]);
    record.sswc14 = FieldNumber(tokens[14]);
    record.sswc15 = FieldNumber(tokens[15]);
    record.sswc16 = FieldNumber(tokens[16]);
    record.replyError = 0;
    return true;
}

bool MyQueryLabr(LabrReply& record) {
    ExchangeReplyBuffer buffer{};
    std::array<char*, LampTokens> tokens{};
    if (!QueryTokens(LampQuery, ListDelimiters<LampTokens>(','), record, buffer, tokens) ||
        !AcceptFields(tokens, record, buffer)) {
        return false;
    }
    record.labr1 = FieldNumber(tokens[1]);
    record.labr2 = FieldNumber(tokens[2]);
    record.labr4 = FieldNumber(tokens[4]);
    record.labr5 = FieldNumber(tokens[5]);
    record.labr6 = FieldNumber(tokens[6]);
    record.labr7 = FieldNumber(tokens[7]);
    record.replyError = 0;
    return true;
}
