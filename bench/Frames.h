#ifndef KOVANTA_BENCH_FRAMES_H
#define KOVANTA_BENCH_FRAMES_H

#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace bench {

using Byte = unsigned char;

/// Raw memory of one frame size that the peers read and write, dense rows.
struct Frames {
    std::size_t w;
    std::size_t h;
    std::vector<Byte> packed;   ///< Source, up to 4 bytes a pixel.
    std::vector<Byte> plane[3]; ///< Sources at full resolution; smaller ones use the beginning.
    std::vector<Byte> packedOut;
    std::vector<Byte> planeOut[3];
    std::vector<Byte> scratch;

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
    std::vector<Byte> noise(std::size_t bytesPerPixel) const {
        std::minstd_rand random(3);
        std::vector<Byte> bytes(w * h * bytesPerPixel);
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

} // namespace bench

#endif
