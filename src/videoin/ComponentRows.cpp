// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/ComponentRows.h"

#include "image/RowKernels.h"
#include "util/Errors.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

extern "C" {
#include <libavutil/frame.h>
}

namespace Ko {

namespace {

using Byte = unsigned char;

constexpr bool isGroup(int step) {
    return step == 1 || step == 2 || step == 4;
}

/// Whether the bits of another component begin above those of this one, in the same word.
bool sharesWords(const StoredFormat& format, const StoredComponent& place) {
    return std::any_of(std::begin(format.component), std::end(format.component), [&](const StoredComponent& other) {
        return other.plane == place.plane && other.offset == place.offset + 1;
    });
}

} // namespace

ComponentRows::ComponentRows(const StoredFormat& format, int component, const AVFrame& picture, RowRoom& r)
    : place(format.component[component])
    , bigEndian(format.bigEndian)
    , first(picture.data[place.plane])
    , stride(picture.linesize[place.plane])
    , room(r) {
    if (!first)
        throwRuntimeError("VideoInputVideoFile::read", "The decoder's picture has no samples.");
    const int depth = place.depth;
    const bool rgb = format.kind == StoredFormat::Kind::rgb;
    rounds = !rgb && !format.full;
    if (!rgb && format.full && depth == 8)
        mapBytes = component == 0 ? rowKernels().lumaToStudio : sampleKernels().chromaToStudio;
    const int half = ((1 << depth) - 1) / 2;
    if (rgb)
        scale = {place.shift, depth, 255, half, 0};
    else if (component == 0)
        scale = {place.shift, depth, 219, half, 16};
    else
        scale = {place.shift, depth, 224, half - 112, 16}; // around zero: 112 = 224 * 2^(n-1) - 112 * (2^n - 1)

    if (depth == 8 && place.shift == 0 && isGroup(place.step))
        layout = Layout::bytes;
    const bool aligned = place.offset % 2 == 0 && place.step % 2 == 0 && isGroup(place.step / 2);
    // What lies at the upper end of its words rounds as words of 16 bits do.
    const bool atAnEnd = (place.shift == 0 && !sharesWords(format, place)) || place.shift + depth == 16;
    if (depth > 8 && !bigEndian && aligned && (!rounds || atAnEnd))
        layout = Layout::words;
}

/// Of any layout, one sample after the other: up to eight bits as bytes, more as words.
void ComponentRows::collect(Byte* dst, const Byte* src, std::size_t n) const {
    const unsigned int mask = (1U << place.depth) - 1;
    const Byte* p = src + place.offset;
    for (std::size_t i = 0; i < n; ++i, p += place.step) {
        const unsigned int here = p[0];
        const unsigned int stored = !place.inWords() ? here : bigEndian ? here << 8 | p[1] : p[1] * 256U + here;
        const unsigned int v = stored >> place.shift & mask;
        if (place.depth > 8) {
            dst[2 * i] = static_cast<Byte>(v);
            dst[2 * i + 1] = static_cast<Byte>(v >> 8);
        } else
            dst[i] = static_cast<Byte>(place.depth == 8 ? v : (v * 255 + mask / 2) / mask);
    }
}

void ComponentRows::scaleWords(Byte* dst, const Byte* words, std::size_t n, int shift) const {
    if (rounds)
        return sampleKernels().roundWords(dst, words, n, place.depth + shift);
    WordScale shifted = scale;
    shifted.shift = shift;
    sampleKernels().scaleWords(dst, words, n, shifted);
}

/// Bytes among which every so many-th is a sample, counted from the first or, in steps of two, from the second: in @p
/// dst unless the picture has them so. Not for other layouts.
const Byte* ComponentRows::items(Byte* dst, std::size_t row, std::size_t n, int step) const {
    const Byte* from = first + static_cast<std::ptrdiff_t>(row) * stride;
    int stored = itemStep();
    if (layout == Layout::words) {
        Byte* bytes = stored == step ? dst : room.groups();
        scaleWords(bytes, from, n * static_cast<std::size_t>(stored), place.shift);
        from = bytes;
    }
    for (int offset = itemOffset(); stored > step; offset /= 2) {
        stored /= 2;
        Byte* to = stored == step ? dst : room.pairs();
        const auto pick = offset % 2 == 0 ? sampleKernels().firstOfPairs : sampleKernels().secondOfPairs;
        pick(to, from, n * static_cast<std::size_t>(stored));
        from = to;
    }
    return from;
}

const Byte* ComponentRows::at(std::size_t row, Byte* dst, std::size_t n) const {
    if (layout != Layout::other) {
        const Byte* samples = items(dst, row, n, 1);
        if (!mapBytes)
            return samples;
        mapBytes(dst, samples, n);
        return dst;
    }
    const Byte* src = first + static_cast<std::ptrdiff_t>(row) * stride;
    if (place.depth > 8) {
        collect(room.groups(), src, n);
        scaleWords(dst, room.groups(), n, 0);
    } else
        collect(dst, src, n);
    if (mapBytes)
        mapBytes(dst, dst, n);
    return dst;
}

bool ComponentRows::joins(std::size_t n, bool inTurn) const {
    const bool needsNoRoom =
        inTurn ? layout == Layout::bytes && itemStep() == 2 : layout != Layout::other && itemStep() == 1;
    return needsNoRoom && stride == static_cast<std::ptrdiff_t>(n) * place.step;
}

bool ComponentRows::isBeside(const ComponentRows& other) const {
    return layout != Layout::other && layout == other.layout && place.plane == other.place.plane &&
           place.step == other.place.step && place.shift == other.place.shift && itemStep() > 1 &&
           std::abs(itemOffset() - other.itemOffset()) == itemStep() / 2;
}

void ComponentRows::both(Byte* mine, Byte* others, std::size_t row, std::size_t n) const {
    const bool leads = itemOffset() < itemStep() / 2;
    sampleKernels().separatePairs(leads ? mine : others, leads ? others : mine, items(room.pairs(), row, n, 2), n);
    if (!mapBytes)
        return;
    mapBytes(mine, mine, n);
    mapBytes(others, others, n);
}

void ComponentRows::into(Byte* dst, std::size_t row, std::size_t n) const {
    const Byte* samples = at(row, dst, n);
    if (samples != dst && n != 0)
        std::memcpy(dst, samples, n);
}

} // namespace Ko
