#pragma once

#include <cstddef>

/// What a process of the peers' run can be; each gives its exit status.
namespace peers {

/// The module's host: logs numbered lines as fast as the log is read, keeps the stage moving, and
/// does what standard input says, with one line of answer each.
///
/// - `held`: whether somebody else keeps the log's mutex
/// - `go`: writes five lines, whatever room the log has, and tells how long that took
/// - `refuse`: has a move refused, which writes one piece, and tells how long that took
/// - `state`: lines so far, and since the last `state` the slowest line, the slowest reading of the
///   record, and how long the record did not change
/// - `mark`: fills what lies behind the log's block; `marked`: whether it is still so
/// - `quit`: stops the module, unloads it and tells how long the stop took
int HostTheLog(bool serialLog);

/// Writes random bytes all over the log's block, without its mutex, until killed.
int ScribbleOverTheBlock();

/// A viewer of the log that keeps its mutex most of the time, until killed.
int ViewSlowly();

/// Loads, starts, stops and unloads the module so many times.
int LoadAndUnload(std::size_t rounds);

}  // namespace peers
