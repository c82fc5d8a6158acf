#include "usage/usage.h"

namespace {

std::size_t Less(std::size_t value, std::size_t loads, std::size_t ofALoad) {
    const std::size_t left = loads * ofALoad;
    return value > left ? value - left : 0;
}

}  // namespace

Usage Without(std::size_t loads, const Usage& usage) {
    return {.memory = Less(usage.memory, loads, LeftByALoad.memory),
            .heap = Less(usage.heap, loads, LeftByALoad.heap),
            .handles = Less(usage.handles, loads, LeftByALoad.handles),
            .threads = Less(usage.threads, loads, LeftByALoad.threads)};
}
