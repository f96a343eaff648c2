// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGE_FORMATTABLE_H
#define KOVANTA_SRC_IMAGE_FORMATTABLE_H

#include "Kovanta/PixelFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Ko {

enum class FormatKind : std::uint8_t { none, planar, packed };

/// What there is to know about a pixel format; everything else is derived from this row.
struct FormatEntry {
    PIXEL_FORMAT format;
    FormatKind kind;
    std::uint8_t bytesPerPixelNum;
    std::uint8_t bytesPerPixelDen;
    std::uint8_t horDiv[4];
    std::uint8_t verDiv[4];
    const char* text;
};

constexpr FormatEntry packed(PIXEL_FORMAT f, std::uint8_t bytesNum, std::uint8_t bytesDen, const char* text) {
    return {f, FormatKind::packed, bytesNum, bytesDen, {1, 0, 0, 0}, {1, 0, 0, 0}, text};
}

/// Luma at full resolution, chroma divided by h x v, and alpha at full resolution or none.
constexpr FormatEntry planar(PIXEL_FORMAT f, std::uint8_t h, std::uint8_t v, bool alpha, const char* text) {
    return {f, FormatKind::planar, 1, 1, {1, h, h, alpha}, {1, v, v, alpha}, text};
}

// A format without a row does not compile.
#pragma GCC diagnostic push
#pragma GCC diagnostic error "-Wswitch"
constexpr FormatEntry rowOf(PIXEL_FORMAT f) {
    switch (f) {
    case PF_UNKNOWN:
        break;
    case PF_YCC444P:
        return planar(f, 1, 1, false, "PF_YCC444P (Planar Y'CbCr 4:4:4)");
    case PF_YCCA4444P:
        return planar(f, 1, 1, true, "PF_YCCA4444P (Planar Y'CbCrA 4:4:4:4)");
    case PF_RGB:
        return packed(f, 3, 1, "PF_RGB (Packed RGB 4:4:4)");
    case PF_RGBA:
        return packed(f, 4, 1, "PF_RGBA (Packed RGBA 4:4:4:4)");
    // The grey formats carry half-width chroma planes that nothing reads: their layout is that of PF_JFIF422P.
    case PF_Y:
        return planar(f, 2, 1, false, "PF_Y (Grayscale)");
    case PF_YAP:
        return planar(f, 2, 1, true, "PF_YAP (Planar grayscale with alpha)");
    case PF_JFIF:
        return packed(f, 3, 1, "PF_JFIF (Packed JFIF Y'CbCr 4:4:4)");
    case PF_JFIF422P:
        return planar(f, 2, 1, false, "PF_JFIF422P (Planar JFIF Y'CbCr 4:2:2)");
    case PF_YCC420P:
        return planar(f, 2, 2, false, "PF_YCC420P (Planar Y'CbCr 4:2:0)");
    case PF_BGR:
        return packed(f, 3, 1, "PF_BGR (Packed BGR)");
    case PF_YUY2:
        return packed(f, 4, 2, "PF_YUY2 (YUY2)");
    }
    return {f, FormatKind::none, 0, 0, {0, 0, 0, 0}, {0, 0, 0, 0}, "PF_UNKNOWN (Unknown format)"};
}
#pragma GCC diagnostic pop

inline constexpr std::size_t formatCount = PF_YUY2 + 1;
static_assert(rowOf(PIXEL_FORMAT{formatCount}).kind == FormatKind::none, "formatCount counts all formats");

inline constexpr auto formatTable = [] {
    std::array<FormatEntry, formatCount> table{};
    for (std::size_t f = 0; f < formatCount; ++f)
        table[f] = rowOf(static_cast<PIXEL_FORMAT>(f));
    return table;
}();

/// The row of a format, or null for a value outside the enumeration.
constexpr const FormatEntry* findFormat(PIXEL_FORMAT f) {
    return f < formatCount ? &formatTable[f] : nullptr;
}

} // namespace Ko

#endif
