#include "replies/motion_condition.h"

#include <string>

#include "log/zbr_log.h"
#include "replies/query.h"

namespace {

constexpr std::size_t Tokens = 14;

struct NamedField {
    const char* name;
    std::int32_t McndReply::*field;
};

/// The fields in the order of the wire, with their names in the log.
constexpr NamedField Fields[Tokens - 1] = {
    {" cancelled=", &McndReply::cancelled}, {" x moving=", &McndReply::xMoving},
    {" y moving=", &McndReply::yMoving},    {" z moving=", &McndReply::zMoving},
    {" x result=", &McndReply::xResult},    {" y result=", &McndReply::yResult},
    {" z result=", &McndReply::zResult},    {" x hw limit=", &McndReply::xHwLimit},
    {" y hw limit=", &McndReply::yHwLimit}, {" z hw limit=", &McndReply::zHwLimit},
    {" x sw limit=", &McndReply::xSwLimit}, {" y sw limit=", &McndReply::ySwLimit},
    {" z sw limit=", &McndReply::zSwLimit},
};

void LogFieldsAsTheyCame(const std::array<char*, Tokens>& tokens) {
    std::string line = "MCND1";
    for (std::size_t i = 0; i < Tokens; ++i) {
        line += " p" + std::to_string(i) + " = " + tokens[i];
    }
    line += "\n";
    LogChannel << line << "\n";
}

void LogNumbers(const McndReply& record) {
    std::string line = "MCND2";
    for (const NamedField& field : Fields) {
        line += field.name + std::to_string(record.*field.field);
    }
    line += "\n";
    LogChannel << line << "\n";
}

}  // namespace

bool MyQueryMcnd(McndReply& record) {
    ExchangeReplyBuffer buffer{};
    std::array<char*, Tokens> tokens{};
    if (!QueryTokens(MotionQuery, ListDelimiters<Tokens>(','), record, buffer, tokens)) {
        return false;
    }
    LogFieldsAsTheyCame(tokens);
    if (!AcceptFields(tokens, record, buffer)) {
        return false;
    }
    for (std::size_t i = 0; i < std::size(Fields); ++i) {
        record.*Fields[i].field = FieldNumber(tokens[i + 1]);
    }
    record.replyError = 0;
    LogNumbers(record);
    return true;
}
