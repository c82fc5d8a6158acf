#pragma once

#include <chrono>
#include <cstddef>

/// What this process holds of its system.
struct Usage {
    std::size_t memory;   ///< bytes of main memory
    std::size_t heap;     ///< bytes that are allocated
    std::size_t handles;  ///< natively file descriptors
    std::size_t threads;
};

Usage MeasureUsage();

/// What a module that was started leaves to its process when it is unloaded, until that ends: above
/// all the two handles of its command event, its starter's and its worker's, which nobody closes.
extern const Usage LeftByALoad;

/// The usage without what so many loads have left.
Usage Without(std::size_t loads, const Usage& usage);

/// The processor time of all threads so far.
std::chrono::nanoseconds ProcessorTime();
