// Counts the allocations of the test program. To be included by one source of a program only, since it
// replaces the operators for all of them. They are not inlined: what is inlined in part looks to the
// compiler like the wrong pair of functions.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace mnd_test {

inline long allocations = 0;  // since the start of the program

}  // namespace mnd_test

[[gnu::noinline]] void* operator new(std::size_t size) {
    ++mnd_test::allocations;
    if (void* block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
    return ::operator new(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete[](void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
