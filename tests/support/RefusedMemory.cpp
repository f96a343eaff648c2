// SPDX-License-Identifier: BSD-2-Clause
#include "support/RefusedMemory.h"

#include "support/Allocations.h"

#include <cerrno>
#include <cstdlib>
#include <new>

static thread_local long untilRefused = -1;
static thread_local long held = 0;

static thread_local test::Requests counts = test::Requests::Malloc;

static bool refuses(test::Requests asked) {
    return untilRefused >= 0 && counts == asked && untilRefused-- == 0;
}

namespace test {

RefusedMemory::RefusedMemory(long n, Requests requests) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    requests = Requests::New;
#endif
    counts = requests;
    untilRefused = n;
}
RefusedMemory::~RefusedMemory() {
    untilRefused = -1;
}
bool RefusedMemory::happened() const {
    return untilRefused < 0;
}
long heldBlocks() {
    return held;
}

} // namespace test

[[maybe_unused]] static const auto hooked = test::beforeAllocation = [] {
    if (refuses(test::Requests::New))
        throw std::bad_alloc();
};

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);

static void* counted(void* memory) {
    held += memory != nullptr;
    return memory;
}
static void* refused() {
    errno = ENOMEM;
    return nullptr;
}

void* malloc(std::size_t size) {
    return refuses(test::Requests::Malloc) ? refused() : counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
    return refuses(test::Requests::Malloc) ? refused() : counted(__libc_calloc(count, size));
}
void* realloc(void* memory, std::size_t size) {
    if (size != 0 && refuses(test::Requests::Malloc))
        return refused();
    void* const moved = __libc_realloc(memory, size);
    held += (moved != nullptr) - (memory != nullptr && (moved || size == 0));
    return moved;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return refuses(test::Requests::Malloc) ? refused() : counted(__libc_memalign(alignment, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
    return aligned_alloc(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    void* const taken = aligned_alloc(alignment, size);
    if (!taken)
        return ENOMEM;
    *memory = taken;
    return 0;
}
void free(void* memory) {
    held -= memory != nullptr;
    __libc_free(memory);
}
}

#endif
