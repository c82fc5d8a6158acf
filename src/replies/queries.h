#pragma once

#include "replies/reply_records.h"

// The four queries. Each takes one exchange. True: a whole reply was read and every number of the
// record is written. False: `replyError` is 1, `replyErrorText` tells why, and a line is in the
// log; nothing else of the record means anything.

/// The three positions, in counts. An axis may be in error in a good reply: it then has its flag
/// and its text, and a number that is no position. Any thread.
bool MyQueryCposmr(CposmrReply& record);

/// The sixteen switch fields. Any thread.
bool MyQuerySswc(SswcReply& record);

/// The lamp values. `lampChanged` is left alone. Any thread.
bool MyQueryLabr(LabrReply& record);

/// How the move stands. The reply goes to the log, as it came and as numbers. Called by the worker.
bool MyQueryMcnd(McndReply& record);
