#pragma once

/// The slow values: at most once in 500 ms, from the start of one status poll to the start of the
/// next, asks for the switches and the lamps, merges what came, and tests the move that is watched.
/// The first status poll comes more than 500 ms after the first call. Called by the worker in every
/// pass that polls.
void MyPollStep();
