// SPDX-License-Identifier: BSD-2-Clause
#include "support/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

// A file of its own: seen together with a "new", the compiler takes the "free" below for a mistake.

static std::atomic<std::size_t> all{0}, big{0};

void (*test::beforeAllocation)() = nullptr;

/// @return memory that free() takes
static void* request(std::size_t size, std::size_t alignment) {
    if (test::beforeAllocation)
        test::beforeAllocation();
    ++all;
    big += size >= 10000;
    if (void* memory = std::aligned_alloc(alignment, (size / alignment + 1) * alignment))
        return memory;
    throw std::bad_alloc();
}

namespace test {

std::size_t allocations() {
    return all;
}
std::size_t bigAllocations() {
    return big;
}

} // namespace test

void* operator new(std::size_t size) {
    return request(size, alignof(std::max_align_t));
}
void* operator new[](std::size_t size) {
    return request(size, alignof(std::max_align_t));
}
// Library code asks for temporary memory by this one; a sanitizer's own would not be what free() takes.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return request(size, alignof(std::max_align_t));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return request(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return request(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
