#include "tests/game/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> count{0};
std::atomic<long> bytes{0};

void note(std::size_t size) {
    ++count;
    bytes += static_cast<long>(size);
}

} // namespace

long allocations() {
    return count;
}

long allocatedBytes() {
    return bytes;
}

void* operator new(std::size_t size) {
    note(size);
    if (void* const memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

// Whoever asks like this gives back with the delete below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    note(size);
    return std::malloc(size > 0 ? size : 1);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
