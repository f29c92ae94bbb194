#include "bench/Allocations.h"

#include <cstdlib>
#include <new>

// Replaces the global operators of this program; the library's other forms come down to these.

namespace {
std::uint64_t allocations = 0;
}

namespace kqu::bench {

std::uint64_t Allocations() {
    return allocations;
}

} // namespace kqu::bench

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
