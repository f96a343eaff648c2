// SPDX-License-Identifier: BSD-2-Clause
#include "draw/TextBlend.h"

#include <cstdint>
#include <cstring>

namespace Ko {

namespace {

using Byte = unsigned char;

/// Both terms together are at most 256 * 255, so 16 bits hold them.
Byte blended(Byte sample, Byte coverage, Byte color) {
    return static_cast<Byte>(((256 - coverage) * sample + coverage * color) >> 8);
}

// Compilers leave blocks as short as a glyph is wide to scalar code unless told.
template <std::size_t block>
struct Vectors;
template <>
struct Vectors<16> {
    typedef Byte Bytes __attribute__((vector_size(16)));
    typedef std::uint16_t Words __attribute__((vector_size(32)));
};
template <>
struct Vectors<8> {
    typedef Byte Bytes __attribute__((vector_size(8)));
    typedef std::uint16_t Words __attribute__((vector_size(16)));
};
template <>
struct Vectors<4> {
    typedef Byte Bytes __attribute__((vector_size(4)));
    typedef std::uint16_t Words __attribute__((vector_size(8)));
};

/// blended() for a block of samples of each plane.
template <std::size_t block>
struct Blender {
    using Bytes = typename Vectors<block>::Bytes;
    using Words = typename Vectors<block>::Words;

    Bytes samples[3];
    Bytes coverage;

    void load(Byte* const (&planes)[3], const Byte* a, std::size_t x) {
        std::memcpy(&coverage, a + x, block);
        for (int p = 0; p < 3; ++p)
            std::memcpy(&samples[p], planes[p] + x, block);
    }

    void store(Byte* const (&planes)[3], std::size_t x, const Byte (&color)[3]) const {
        const Words a = __builtin_convertvector(coverage, Words);
        const Words rest = 256 - a;
        for (int p = 0; p < 3; ++p) {
            const Words sum = rest * __builtin_convertvector(samples[p], Words) + a * std::uint16_t{color[p]};
            const Bytes result = __builtin_convertvector(sum >> 8, Bytes);
            std::memcpy(planes[p] + x, &result, block);
        }
    }
};

/// A row of at least one block. Glyphs are narrow, so what is left over must not fall to single samples: the last
/// block overlaps the one before it, computed from samples that were loaded before any was stored.
template <std::size_t block>
__attribute__((always_inline)) inline void blendRow(Byte* const (&planes)[3], const Byte* coverage, std::size_t n,
                                                    const Byte (&color)[3]) {
    Blender<block> last;
    last.load(planes, coverage, n - block);
    for (std::size_t x = 0; x + block < n; x += block) {
        Blender<block> one;
        one.load(planes, coverage, x);
        one.store(planes, x, color);
    }
    last.store(planes, n - block, color);
}

} // namespace

// A few pixels a call: guarding the stack, on which nothing here is indexed by what varies, would cost a tenth.
__attribute__((no_stack_protector)) void blendText(Byte* y, Byte* cb, Byte* cr, const Byte* coverage, std::size_t n,
                                                   YCCColor c) {
    Byte* const planes[3] = {y, cb, cr};
    const Byte color[3] = {c.y, c.cb, c.cr};
    if (n >= 16)
        blendRow<16>(planes, coverage, n, color);
    else if (n >= 8)
        blendRow<8>(planes, coverage, n, color);
    else if (n >= 4)
        blendRow<4>(planes, coverage, n, color);
    else
        for (int p = 0; p < 3; ++p)
            for (std::size_t x = 0; x < n; ++x)
                planes[p][x] = blended(planes[p][x], coverage[x], color[p]);
}

} // namespace Ko
