// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_KERNELS_LANES_H
#define KOVANTA_SRC_IMAGE_KERNELS_LANES_H

// What Vectors512.h has in instructions that reach over the whole vector, for levels whose shuffles stay within lanes
// of 128 bits: the same in every lane, a run of 16 pixels.

#include "image/kernels/Vectors.h"

#include <immintrin.h>

#include <array>
#include <cstddef>

namespace Ko {
namespace {

template <class Function>
constexpr std::array<unsigned char, vectorBytes> table(Function f) {
    std::array<unsigned char, vectorBytes> t{};
    for (std::size_t i = 0; i < vectorBytes; ++i)
        t[i] = static_cast<unsigned char>(f(i));
    return t;
}

template <int step, int b0, int b1, int b2, int b3>
inline Vec pixelIndex() {
    static constexpr auto index = table([](std::size_t i) {
        constexpr int offsets[4] = {b0, b1, b2, b3};
        return offsets[i % 4] < 0 ? 0x80 : step * (static_cast<int>(i) / 4 % 4) + offsets[i % 4];
    });
    return loadVector(index.data());
}

// Where adding a sum to products is an instruction of its own, a sum begins with its first products. The bias follows
// once two sums have become words: the half with the rounding shift, 128 with the last step, and little or nothing is
// left to be added.
template <int bias>
inline Vec firstDotProducts(Vec a, Vec b) {
    if constexpr (dotProductsAdd)
        return addDotProducts(broadcastDwords(bias), a, b);
    return multiplyPairs(a, b);
}
template <int bias>
inline Vec resultsOf(Vec first, Vec second) {
    if constexpr (dotProductsAdd)
        return packDwords(shiftRightDwords<23>(first), shiftRightDwords<23>(second));
    static_assert(bias % (1 << 16) == 0, "whole in words");
    constexpr int left = (bias - (1 << 22) - (128 << 23)) / (1 << 16);
    const Vec words = wordsInTurn(shiftRightDwords<16>(first), second);
    return shiftRightRounded<7>(left == 0 ? words : addWords(words, broadcastWords(left)));
}
constexpr std::size_t placeInTurn(std::size_t i) {
    return i / 8 * 8 + i % 4 * 2 + i / 4 % 2;
}
inline Vec packResults(Vec first, Vec second) {
    if constexpr (dotProductsAdd)
        return packWords(first, second);
    static constexpr auto order = table([](std::size_t i) { return placeInTurn(i % 16); });
    return shuffleBytes(xorBits(packSignedWords(first, second), broadcastBytes(0x80)), loadVector(order.data()));
}

inline Vec descale(Vec lower, Vec upper) {
    return shiftRightSignedWords<5>(wordsInTurn(shiftRightDwords<16>(lower), upper));
}
constexpr std::size_t inOrder(std::size_t i) {
    return i;
}

// Byte j of part p of a run's triples belongs to component (p + j) % 3, so in each byte the three parts hold one
// component each, and a part is chosen from them by a selection.

template <std::size_t remainder>
inline Vec everyThird() {
    static constexpr auto mask = table([](std::size_t i) { return i % 16 % 3 == remainder ? 0xFF : 0; });
    return loadVector(mask.data());
}
/// Byte j from the one of three vectors with number (shift - j) mod 3.
template <std::size_t shift>
inline Vec selectInTurn(Vec v0, Vec v1, Vec v2) {
    return select(select(v0, v1, everyThird<(shift + 2) % 3>()), v2, everyThird<(shift + 1) % 3>());
}

/// The samples of a component, pixel i of a run at place(i), where the parts of the triples have them.
template <std::size_t component, std::size_t (*place)(std::size_t)>
inline Vec distribute(Vec v) {
    static constexpr auto index = table([](std::size_t i) {
        const std::size_t j = i % 16;
        const std::size_t part = (component + 15 - j) % 3;
        return place((16 * part + j) / 3);
    });
    return shuffleBytes(v, loadVector(index.data()));
}

/// Interleaves three vectors; pixel i of a run lies at place(i) in its lane.
template <class Store, std::size_t (*place)(std::size_t)>
inline void storeTriples(unsigned char* dst, Vec a, Vec b, Vec c) {
    const Vec a3 = distribute<0, place>(a);
    const Vec b3 = distribute<1, place>(b);
    const Vec c3 = distribute<2, place>(c);
    storeParts<Store>(dst, selectInTurn<0>(a3, c3, b3), selectInTurn<2>(a3, c3, b3), selectInTurn<1>(a3, c3, b3));
}

/// Where byte i of a part of RGB is in one of three vectors: red and green of the lower eight pixels, those of the
/// upper, and blue.
enum class From { lowRedGreen, highRedGreen, blue };
template <std::size_t part, From from>
inline Vec pickedFrom(Vec v) {
    static constexpr auto index = table([](std::size_t i) -> std::size_t {
        const std::size_t at = 16 * part + i % 16;
        const std::size_t pixel = at / 3;
        const std::size_t component = at % 3;
        constexpr std::size_t none = 0x80;
        if (from == From::blue)
            return component == 2 ? placeInTurn(pixel) : none;
        const bool here = component != 2 && (pixel < 8) == (from == From::lowRedGreen);
        return here ? 8 * component + placeInTurn(pixel % 8) : none;
    });
    return shuffleBytes(v, loadVector(index.data()));
}

/// The first part needs no upper pixels and the last no lower ones, which spares shuffles.
template <class Store>
inline void storeDescaled(unsigned char* dst, Vec lowR, Vec lowG, Vec lowB, Vec highR, Vec highG, Vec highB) {
    const Vec low = packWords(lowR, lowG);
    const Vec high = packWords(highR, highG);
    const Vec blue = packWords(lowB, highB);
    storeParts<Store>(dst, orBits(pickedFrom<0, From::lowRedGreen>(low), pickedFrom<0, From::blue>(blue)),
                      orBits(orBits(pickedFrom<1, From::lowRedGreen>(low), pickedFrom<1, From::highRedGreen>(high)),
                             pickedFrom<1, From::blue>(blue)),
                      orBits(pickedFrom<2, From::highRedGreen>(high), pickedFrom<2, From::blue>(blue)));
}

/// What packs made of four vectors' 32-bit lanes, one for each quarter of a block, in the order of the block: so lie
/// the quarters that loadPixels() takes.
inline Vec orderQuarters(Vec packed) {
    return packed;
}
/// Two vectors of words of each two quarters, packed, in the order of the block.
inline void storeHalves(unsigned char* dst, Vec first, Vec second) {
    storeInterleaved(dst, first, second);
}

/// One component of a block of triples.
template <std::size_t component>
inline Vec loadComponent(const unsigned char* src) {
    static constexpr auto index = table([](std::size_t i) { return (i % 16 * 3 + component) % 16; });
    const Parts parts = loadParts(src);
    return shuffleBytes(selectInTurn<component>(parts.part[0], parts.part[1], parts.part[2]), loadVector(index.data()));
}

/// What a part of a run in reverse has of one part of the run, the same in every lane.
template <std::size_t part, std::size_t from>
inline Vec reversedFrom(Vec v) {
    static constexpr auto index = table([](std::size_t i) -> std::size_t {
        const std::size_t at = 16 * part + i % 16;
        const std::size_t source = 3 * (15 - at / 3) + at % 3;
        return source / 16 == from ? source % 16 : 0x80;
    });
    return shuffleBytes(v, loadVector(index.data()));
}

/// A block of triples in reverse.
constexpr std::size_t mirroredAtOnce = vectorBytes;
constexpr bool mirrorsByteTooMany = false;
template <class Store>
inline void mirrorSome(unsigned char* dst, const unsigned char* src) {
    const Parts p = loadPartsSwapped(src);
    const Vec part0 = orBits(reversedFrom<0, 2>(p.part[2]), reversedFrom<0, 1>(p.part[1]));
    const Vec part1 =
        orBits(orBits(reversedFrom<1, 2>(p.part[2]), reversedFrom<1, 1>(p.part[1])), reversedFrom<1, 0>(p.part[0]));
    const Vec part2 = orBits(reversedFrom<2, 1>(p.part[1]), reversedFrom<2, 0>(p.part[0]));
    storeParts<Store>(dst, part0, part1, part2);
}

} // namespace
} // namespace Ko

#endif
