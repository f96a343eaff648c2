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
using Bytes = std::vector<Byte, LineAllocator<Byte>>;

/// Raw memory of one frame size that the peers read and write, dense rows.
struct Frames {
    std::size_t w;
    std::size_t h;
    Bytes packed;   ///< Source, up to 4 bytes a pixel.
    Bytes plane[3]; ///< Sources at full resolution; smaller ones use the beginning.
    Bytes packedOut;
    Bytes planeOut[3];
    Bytes scratch;

    Frames(std::size_t width, std::size_t height)
        : w(width)
        , h(height)
        , packed(noise(4))
        , packedOut(noise(4))
        , scratch(noise(4)) {
        for (int p = 0; p < 3; ++p) {
            plane[p] = noise(1);
            planeOut[p] = noise(1);
        }
    }

private:
    Bytes noise(std::size_t bytesPerPixel) const {
        std::minstd_rand random(3);
        Bytes bytes(w * h * bytesPerPixel);
        for (Byte& b : bytes)
            b = static_cast<Byte>(random() >> 16);
        return bytes;
    }
};

/// A peer's way to do the job of that name (see conversions.cpp).
struct Peer {
    std::string job;
    std::string name;
    void (*run)(Frames& f);
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
