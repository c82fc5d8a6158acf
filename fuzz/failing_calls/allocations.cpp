#include <cstdlib>
#include <new>

#include "failing_calls/failing.h"

// All plain forms, so that each new has the delete that belongs to it, also beside a sanitizer's
// own ones. The module has nothing that asks for more than the usual alignment.

namespace {

void* Allocate(std::size_t size, const void* caller) {
    return failing::MemoryFails(caller) ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size, const void* caller) {
    void* memory = Allocate(size, caller);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, __builtin_return_address(0));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size, __builtin_return_address(0));
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
