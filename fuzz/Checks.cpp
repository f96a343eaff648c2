// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"

#include <dirent.h>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace fuzz {

namespace {

std::size_t mostBytes = static_cast<std::size_t>(-1);

std::size_t openDescriptors() {
    DIR* const directory = opendir("/proc/self/fd");
    require(directory != nullptr, "/proc/self/fd cannot be listed");
    std::size_t count = 0;
    while (readdir(directory))
        ++count;
    closedir(directory);
    return count;
}

void* obtain(std::size_t size, std::size_t alignment) {
    void* block = nullptr;
    if (size > mostBytes || posix_memalign(&block, alignment, size) != 0)
        throw std::bad_alloc();
    return block;
}

} // namespace

void fail(const std::string& what) {
    std::fprintf(stderr, "FINDING: %s\n", what.c_str());
    std::abort();
}

AllocationLimit::AllocationLimit(std::size_t most) {
    mostBytes = most;
}

AllocationLimit::~AllocationLimit() {
    mostBytes = static_cast<std::size_t>(-1);
}

DescriptorWatch::DescriptorWatch()
    : before(openDescriptors()) {}

DescriptorWatch::~DescriptorWatch() {
    require(openDescriptors() <= before, "a descriptor stays open");
}

void requireSame(const test::Image& im, const test::Image& expected, const char* what) {
    const std::string found = test::difference(im, expected);
    if (!found.empty())
        fail(std::string(what) + ": " + found);
}

} // namespace fuzz

// The other allocations of C++ stay the sanitizer's, whose blocks may then be freed by ours.
extern "C" const char* __asan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "alloc_dealloc_mismatch=0:allocator_may_return_null=1";
}

// The program's own, so that sizes can be refused without the sanitizer's taking it for the end of the world.
void* operator new(std::size_t size) {
    return fuzz::obtain(size, alignof(std::max_align_t));
}
void* operator new[](std::size_t size) {
    return fuzz::obtain(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return fuzz::obtain(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return fuzz::obtain(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}
