#include "videoout/CountedAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

// A file of its own: seen together with a "new", the compiler takes the "free" below for a mistake.

static std::atomic<std::size_t> count{0};

static thread_local long untilRefused = -1;

std::size_t bigAllocations() {
    return count;
}

void refuseAllocation(long n) {
    untilRefused = n;
}

void* operator new(std::size_t size) {
    count += size >= 10000;
    if (untilRefused >= 0 && untilRefused-- == 0)
        throw std::bad_alloc();
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
// Images ask for memory that is aligned, and for that through the array form.
void* operator new[](std::size_t size, std::align_val_t alignment) {
    if (size >= 10000)
        ++count;
    const auto step = static_cast<std::size_t>(alignment);
    if (void* memory = std::aligned_alloc(step, (size / step + 1) * step))
        return memory;
    throw std::bad_alloc();
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
