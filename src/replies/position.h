#pragma once

#include "replies/reply_records.h"

/// Asks the controller for the three positions. True: every number and axis flag of `record` is
/// written, in counts; an axis may still be in error. False: `replyError` is 1, `replyErrorText`
/// tells why, and a line is in the log; nothing else of the record means anything. Any thread;
/// takes one exchange.
bool MyQueryCposmr(CposmrReply& record);
