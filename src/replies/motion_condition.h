#pragma once

#include "replies/reply_records.h"

/// Asks the controller how the move stands and writes the reply to the log, as it came and as
/// numbers. True: all thirteen numbers of `record` are written. False: `replyError` is 1,
/// `replyErrorText` tells why, and a line is in the log. Called by the worker; takes one exchange.
bool MyQueryMcnd(McndReply& record);
