#include "homing/homing_condition.h"

bool HomingCondition::Query() {
    if (!ExchangeChecked(HomingQuery.request, HomingQuery.prefix, buffer)) {
        return false;
    }
    char* rest = buffer.data();
    NextToken(rest, '=');
    for (const char*& field : fields) {
        field = NextToken(rest, ',');
    }
    return true;
}
