#include <string>

#include "log/zbr_log.h"
#include "replies/queries.h"
#include "replies/query.h"

namespace {

struct NamedField {
    const char* name;
    std::int32_t McndReply::*field;
};

/// The fields in the order of the wire, with their names in the log.
constexpr NamedField Fields[] = {
    {" cancelled=", &McndReply::cancelled}, {" x moving=", &McndReply::xMoving},
    {" y moving=", &McndReply::yMoving},    {" z moving=", &McndReply::zMoving},
    {" x result=", &McndReply::xResult},    {" y result=", &McndReply::yResult},
    {" z result=", &McndReply::zResult},    {" x hw limit=", &McndReply::xHwLimit},
    {" y hw limit=", &McndReply::yHwLimit}, {" z hw limit=", &McndReply::zHwLimit},
    {" x sw limit=", &McndReply::xSwLimit}, {" y sw limit=", &McndReply::ySwLimit},
    {" z sw limit=", &McndReply::zSwLimit},
};
constexpr std::size_t Count = std::size(Fields);

void LogFieldsAsTheyCame(const Tokens<Count>& tokens) {
    std::string line = "MCND1";
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        line += " p" + std::to_string(i) + " = " + tokens[i];
    }
    WriteLine(line + "\n", "\n");
}

void LogNumbers(const McndReply& record) {
    std::string line = "MCND2";
    for (const NamedField& field : Fields) {
        line += field.name + std::to_string(record.*field.field);
    }
    WriteLine(line + "\n", "\n");
}

}  // namespace

bool MyQueryMcnd(McndReply& record) {
    ExchangeReplyBuffer buffer{};
    Tokens<Count> tokens{};
    if (!QueryTokens<Count>(MotionQuery, ',', record, buffer, tokens, LogFieldsAsTheyCame)) {
        return false;
    }
    for (std::size_t i = 0; i < Count; ++i) {
        record.*Fields[i].field = FieldNumber(tokens[i + 1]);
    }
    LogNumbers(record);
    return true;
}
