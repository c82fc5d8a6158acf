#pragma once

#include "replies/reply_records.h"

// Both queries: true when a whole reply was read and every number of the record is written. False:
// `replyError` is 1, `replyErrorText` tells why, and a line is in the log; the numbers mean
// nothing. Any thread; each takes one exchange.

/// Asks the controller for its sixteen switch fields.
bool MyQuerySswc(SswcReply& record);

/// Asks the controller for its lamp values. `lampChanged` is left alone.
bool MyQueryLabr(LabrReply& record);
