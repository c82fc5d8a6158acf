#pragma once

/// What the worker does while the line is lost. All of it on the worker.

/// Asks for the position and merges what comes. False without a good reply.
bool PollPosition();

/// A step of at most 50 ms while nothing is due, so that a stop need not wait. The first one after
/// a loss breaks off what is under way: homing has failed, and so has a watched move. Half a second
/// later, and then after twice the pause each time, up to 8 s from one try to the next, the port is
/// closed and opened anew, and the controller asked for remote mode and position. True when both
/// answers were good: the line is back.
bool TendLostLine();
