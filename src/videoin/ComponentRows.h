// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOIN_COMPONENTROWS_H
#define KOVANTA_SRC_VIDEOIN_COMPONENTROWS_H

#include "image/SampleKernels.h"
#include "videoin/RowRoom.h"
#include "videoin/StoredFormat.h"

#include <cstddef>

struct AVFrame;

namespace Ko {

/// One component of a decoded picture, row by row in bytes: Y'CbCr and grey in studio range, RGB as 0 to 255. Of n
/// bits, M = 2^n - 1:
///
///     studio range, n > 8     (v + 2^(n-9)) >> (n-8), at most 255
///     full range, 8 bits      as PF_JFIF: Y' v * 219 / 255 + 16, Cb and Cr v * 224 / 255 + 16, truncated
///     full range, n > 8       Y' v * 219 / M + 16, Cb and Cr (v - 2^(n-1)) * 224 / M + 128, to the nearest
///     RGB, n other than 8     v * 255 / M, to the nearest
class ComponentRows {
public:
    /// @param room used between the steps
    /// @throws std::runtime_error when the picture has no such plane
    ComponentRows(const StoredFormat& format, int component, const AVFrame& picture, RowRoom& room);

    /// The first n samples of a row: where the picture has them when they are already as they should be, else in @p
    /// dst.
    const unsigned char* at(std::size_t row, unsigned char* dst, std::size_t n) const;
    /// The first n samples of a row, in @p dst.
    void into(unsigned char* dst, std::size_t row, std::size_t n) const;

    /// Whether rows of n samples follow one another and need no room, so that they may be taken as one; @p inTurn with
    /// those of the component beside it.
    bool joins(std::size_t n, bool inTurn = false) const;

    /// Whether another component lies in turn with this one.
    bool isBeside(const ComponentRows& other) const;
    /// The first n samples of a row of this component and of the one beside it.
    void both(unsigned char* mine, unsigned char* others, std::size_t row, std::size_t n) const;

private:
    enum class Layout : unsigned char { bytes, words, other };

    void collect(unsigned char* dst, const unsigned char* src, std::size_t n) const;
    void scaleWords(unsigned char* dst, const unsigned char* words, std::size_t n, int shift) const;
    int itemStep() const { return layout == Layout::words ? place.step / 2 : place.step; }
    int itemOffset() const { return layout == Layout::words ? place.offset / 2 : place.offset; }
    const unsigned char* items(unsigned char* dst, std::size_t row, std::size_t n, int step) const;

    StoredComponent place;
    bool bigEndian;
    const unsigned char* first;
    std::ptrdiff_t stride;
    RowRoom& room;
    Layout layout = Layout::other;
    bool rounds = false;                                                                     ///< Studio range.
    void (*mapBytes)(unsigned char* dst, const unsigned char* src, std::size_t n) = nullptr; ///< Of full range.
    WordScale scale{};                                                                       ///< Of other words.
};

} // namespace Ko

#endif
