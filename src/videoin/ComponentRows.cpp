// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/ComponentRows.h"

#include "image/RowKernels.h"
#include "util/Errors.h"

#include <cstring>

extern "C" {
#include <libavutil/frame.h>
}

namespace Ko {

namespace {

using Byte = unsigned char;

constexpr bool isGroup(int step) {
    return step == 1 || step == 2 || step == 4;
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
    const bool atAnEnd = place.shift == 0 || place.shift + depth == 16;
    if (depth > 8 && !bigEndian && aligned && (!rounds || atAnEnd))
        layout = Layout::words;
}

/// Of any layout, one sample after the other: up to eight bits as bytes, more as words.
void ComponentRows::collect(Byte* dst, const Byte* src, std::size_t n) const {
    const unsigned int mask = (1U << place.depth) - 1;
    const Byte* p = src + place.offset;
    for (std::size_t i = 0; i < n; ++i, p += place.step) {
        const unsigned int stored = !place.inWords() ? p[0] : bigEndian ? p[0] << 8 | p[1] : p[1] << 8 | p[0];
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

/// The n samples of the component among items of one byte.
const Byte* ComponentRows::pick(Byte* dst, const Byte* items, std::size_t n) const {
    const int unit = layout == Layout::words ? 2 : 1;
    int offset = place.offset / unit;
    for (int step = place.step / unit; step > 1; step /= 2, offset /= 2) {
        Byte* to = step == 2 ? dst : room.pairs();
        const auto kernel = offset % 2 == 0 ? sampleKernels().firstOfPairs : sampleKernels().secondOfPairs;
        kernel(to, items, n * static_cast<std::size_t>(step) / 2);
        items = to;
    }
    return items;
}

const Byte* ComponentRows::at(std::size_t row, Byte* dst, std::size_t n) const {
    const Byte* src = first + static_cast<std::ptrdiff_t>(row) * stride;
    switch (layout) {
    case Layout::bytes: {
        const Byte* samples = pick(dst, src, n);
        if (!mapBytes)
            return samples;
        mapBytes(dst, samples, n);
        return dst;
    }
    case Layout::words: {
        const auto step = static_cast<std::size_t>(place.step) / 2;
        Byte* items = step == 1 ? dst : room.groups();
        scaleWords(items, src, n * step, place.shift);
        return pick(dst, items, n);
    }
    case Layout::other:
        if (place.depth > 8) {
            collect(room.groups(), src, n);
            scaleWords(dst, room.groups(), n, 0);
        } else
            collect(dst, src, n);
        if (mapBytes)
            mapBytes(dst, dst, n);
        return dst;
    }
    return dst;
}

void ComponentRows::into(Byte* dst, std::size_t row, std::size_t n) const {
    const Byte* samples = at(row, dst, n);
    if (samples != dst && n != 0)
        std::memcpy(dst, samples, n);
}

} // namespace Ko
