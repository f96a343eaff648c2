// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_BENCH_FRAMES_H
#define KOVANTA_BENCH_FRAMES_H

#include "image/kernels/KernelLevels.h"

#include <cstddef>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace bench {

using Byte = unsigned char;

/// Memory that starts at a cache line, as our images do: peers shall not lose by where their bytes lie.
template <class T>
struct LineAllocator {
    using value_type = T;
    T* allocate(std::size_t n) { return static_cast<T*>(::operator new (n * sizeof(T), std::align_val_t{64})); }
    void deallocate(T* memory, std::size_t) { ::operator delete (memory, std::align_val_t{64}); }
    bool operator==(const LineAllocator&) const { return true; }
    bool operator!=(const LineAllocator&) const { return false; }
};

/// What the peers read and write, dense rows. What a job's images have is their memory: where bytes lie decides about a
/// tenth of a small flip's time.
struct Frames {
    std::size_t w;
    std::size_t h;
    Byte* packed;   ///< Source, up to 4 bytes a pixel.
    Byte* plane[3]; ///< Sources at full resolution; smaller ones use the beginning.
    Byte* packedOut;
    Byte* planeOut[3];
    Byte* scratch;
};

/// Memory for what a job's images do not have.
class SpareMemory {
public:
    SpareMemory(std::size_t width, std::size_t height)
        : w(width)
        , h(height)
        , bytes(w * h * 18) {
        std::minstd_rand random(3);
        for (Byte& b : bytes)
            b = static_cast<Byte>(random() >> 16);
    }
    Frames frames() {
        Byte* const p = bytes.data();
        const std::size_t n = w * h;
        return {w,         h, p, {p + 4 * n, p + 5 * n, p + 6 * n}, p + 7 * n, {p + 11 * n, p + 12 * n, p + 13 * n},
                p + 14 * n};
    }

private:
    std::size_t w;
    std::size_t h;
    std::vector<Byte, LineAllocator<Byte>> bytes;
};

/// A peer's way to do the job of that name (see conversions.cpp).
struct Peer {
    std::string job;
    std::string name;
    void (*run)(const Frames& f);
};
std::vector<Peer> libyuvPeers();
std::vector<Peer> swscalePeers();
std::vector<Peer> opencvPeers();

// Hold a peer to the instructions that a level of ours has.
void limitLibyuv(Ko::KernelLevel level);
void limitSwscale(Ko::KernelLevel level);
/// OpenCV asks the environment once, before main(): the value for OPENCV_CPU_DISABLE.
const char* opencvFeaturesBeyond(Ko::KernelLevel level);

} // namespace bench

#endif
