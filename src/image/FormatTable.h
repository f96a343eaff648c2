#ifndef KOVANTA_SRC_IMAGE_FORMATTABLE_H
#define KOVANTA_SRC_IMAGE_FORMATTABLE_H

#include "Kovanta/PixelFormat.h"

#include <cstdint>
#include <iterator>

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

// The grey formats carry half-width chroma planes that nothing reads: their layout is that of PF_JFIF422P.
inline constexpr FormatEntry formatTable[] = {
    {PF_UNKNOWN, FormatKind::none, 0, 0, {0, 0, 0, 0}, {0, 0, 0, 0}, "PF_UNKNOWN (Unknown format)"},
    {PF_YCC444P, FormatKind::planar, 1, 1, {1, 1, 1, 0}, {1, 1, 1, 0}, "PF_YCC444P (Planar Y'CbCr 4:4:4)"},
    {PF_YCCA4444P, FormatKind::planar, 1, 1, {1, 1, 1, 1}, {1, 1, 1, 1}, "PF_YCCA4444P (Planar Y'CbCrA 4:4:4:4)"},
    {PF_RGB, FormatKind::packed, 3, 1, {1, 0, 0, 0}, {1, 0, 0, 0}, "PF_RGB (Packed RGB 4:4:4)"},
    {PF_RGBA, FormatKind::packed, 4, 1, {1, 0, 0, 0}, {1, 0, 0, 0}, "PF_RGBA (Packed RGBA 4:4:4:4)"},
    {PF_Y, FormatKind::planar, 1, 1, {1, 2, 2, 0}, {1, 1, 1, 0}, "PF_Y (Grayscale)"},
    {PF_YAP, FormatKind::planar, 1, 1, {1, 2, 2, 1}, {1, 1, 1, 1}, "PF_YAP (Planar grayscale with alpha)"},
    {PF_JFIF, FormatKind::packed, 3, 1, {1, 0, 0, 0}, {1, 0, 0, 0}, "PF_JFIF (Packed JFIF Y'CbCr 4:4:4)"},
    {PF_JFIF422P, FormatKind::planar, 1, 1, {1, 2, 2, 0}, {1, 1, 1, 0}, "PF_JFIF422P (Planar JFIF Y'CbCr 4:2:2)"},
    {PF_YCC420P, FormatKind::planar, 1, 1, {1, 2, 2, 0}, {1, 2, 2, 0}, "PF_YCC420P (Planar Y'CbCr 4:2:0)"},
    {PF_BGR, FormatKind::packed, 3, 1, {1, 0, 0, 0}, {1, 0, 0, 0}, "PF_BGR (Packed BGR)"},
    {PF_YUY2, FormatKind::packed, 4, 2, {1, 0, 0, 0}, {1, 0, 0, 0}, "PF_YUY2 (YUY2)"},
};

inline constexpr std::size_t formatCount = std::size(formatTable);

constexpr bool rowsFollowTheEnumeration() {
    for (std::size_t i = 0; i < formatCount; ++i)
        if (formatTable[i].format != i)
            return false;
    return formatTable[formatCount - 1].format == PF_YUY2;
}
static_assert(rowsFollowTheEnumeration(), "formatTable has one row per PIXEL_FORMAT, in order");

/// The row of a format, or null for a value outside the enumeration.
constexpr const FormatEntry* findFormat(PIXEL_FORMAT f) {
    return f < formatCount ? &formatTable[f] : nullptr;
}

} // namespace Ko

#endif
