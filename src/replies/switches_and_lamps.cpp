#include "replies/queries.h"
#include "replies/query.h"

bool MyQuerySswc(SswcReply& record) {
    constexpr std::int32_t SswcReply::*Fields[] = {
        &SswcReply::EMER_SW,   &SswcReply::sswc2,  &SswcReply::SW_Y,   &SswcReply::sswc4,
        &SswcReply::DATA_SW,   &SswcReply::sswc6,  &SswcReply::sswc7,  &SswcReply::sswc8,
        &SswcReply::sswc9,     &SswcReply::sswc10, &SswcReply::sswc11, &SswcReply::FOOT_SW,
        &SswcReply::MEAS_MODE, &SswcReply::sswc14, &SswcReply::sswc15, &SswcReply::sswc16,
    };
    constexpr std::size_t Count = std::size(Fields);
    ExchangeReplyBuffer buffer{};
    Tokens<Count> tokens{};
    if (!QueryTokens<Count>(SwitchQuery, '\r', record, buffer, tokens)) {
        return false;
    }
    for (std::size_t i = 0; i < Count; ++i) {
        record.*Fields[i] = FieldNumber(tokens[i + 1]);
    }
    return true;
}

bool MyQueryLabr(LabrReply& record) {
    ExchangeReplyBuffer buffer{};
    Tokens<7> tokens{};
    if (!QueryTokens<7>(LampQuery, ',', record, buffer, tokens)) {
        return false;
    }
    record.labr1 = FieldNumber(tokens[1]);
    record.labr2 = FieldNumber(tokens[2]);
    record.labr4 = FieldNumber(tokens[4]);
    record.labr5 = FieldNumber(tokens[5]);
    record.labr6 = FieldNumber(tokens[6]);
    record.labr7 = FieldNumber(tokens[7]);
    return true;
}
