#pragma once

#include <cstdint>

#include "replies/reply_records.h"

/// @file
/// The notice of a move's end.

/// Tells the end of a move. Called on the worker, with no lock of the module held, at most once per
/// move; until it returns nothing is polled and no posted command is sent. It may call the exports.
/// An exception that leaves it ends the worker.
/// `finished`: always true. `error`: the move was cancelled, failed, or met a limit. `reply`: the
/// motion condition that ended the move, valid during the call only. `data`: the caller's own
/// value.
using CncNotifyCallback = void (*)(bool finished, bool error, const McndReply* reply,
                                   std::intptr_t data);
