#include "draw/SmallFonts.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace {

using Bytes = std::string;

Bytes u16(int v) {
    return {static_cast<char>(v >> 8 & 255), static_cast<char>(v & 255)};
}

Bytes u32(std::uint32_t v) {
    return u16(static_cast<int>(v >> 16)) + u16(static_cast<int>(v & 0xffff));
}

/// An outline of one closed contour of straight lines.
Bytes outline(const std::vector<std::pair<int, int>>& points) {
    int box[4] = {points[0].first, points[0].second, points[0].first, points[0].second};
    Bytes flags;
    Bytes xs;
    Bytes ys;
    int x = 0;
    int y = 0;
    for (const auto& p : points) {
        box[0] = std::min(box[0], p.first);
        box[1] = std::min(box[1], p.second);
        box[2] = std::max(box[2], p.first);
        box[3] = std::max(box[3], p.second);
        flags += '\1'; // on the curve, both coordinates as words
        xs += u16(p.first - x);
        ys += u16(p.second - y);
        x = p.first;
        y = p.second;
    }
    Bytes glyph = u16(1);
    for (const int edge : box)
        glyph += u16(edge);
    glyph += u16(static_cast<int>(points.size()) - 1) + u16(0) + flags + xs + ys;
    while (glyph.size() % 4 != 0)
        glyph += '\0';
    return glyph;
}

} // namespace

std::string smallTrueType(int unitsPerEm) {
    const Bytes box = outline({{100, 0}, {100, 700}, {500, 700}, {500, 0}});
    const Bytes triangle = outline({{-90, -150}, {300, 800}, {690, -150}});
    std::map<Bytes, Bytes> tables;
    tables["glyf"] = box + triangle;
    tables["loca"] =
        u16(0) + u16(static_cast<int>(box.size() / 2)) + u16(static_cast<int>((box.size() + triangle.size()) / 2));
    tables["head"] = u32(0x00010000) + u32(0x00010000) + u32(0) + u32(0x5f0f3cf5) + u16(0) + u16(unitsPerEm) +
                     Bytes(16, '\0') + u16(-90) + u16(-150) + u16(690) + u16(800) + u16(0) + u16(6) + u16(2) + u16(0) +
                     u16(0);
    tables["hhea"] = u32(0x00010000) + u16(800) + u16(-200) + u16(0) + u16(650) + u16(-90) + u16(0) + u16(690) +
                     u16(1) + Bytes(14, '\0') + u16(2);
    tables["hmtx"] = u16(600) + u16(100) + u16(650) + u16(-90);
    tables["maxp"] = u32(0x00010000) + u16(2) + u16(4) + u16(1) + u16(0) + u16(0) + u16(1) + Bytes(16, '\0');
    // Format 4 with a segment for 'A' and the closing one.
    tables["cmap"] = u16(0) + u16(1) + u16(3) + u16(1) + u32(12) + u16(4) + u16(32) + u16(0) + u16(4) + u16(4) +
                     u16(1) + u16(0) + u16('A') + u16(0xffff) + u16(0) + u16('A') + u16(0xffff) + u16(1 - 'A') +
                     u16(1) + u16(0) + u16(0);

    const int count = static_cast<int>(tables.size());
    Bytes font = u32(0x00010000) + u16(count) + u16(64) + u16(2) + u16(count * 16 - 64);
    auto offset = static_cast<std::uint32_t>(font.size() + tables.size() * 16);
    Bytes data;
    for (auto& [tag, table] : tables) {
        font += tag + u32(0) + u32(offset) + u32(static_cast<std::uint32_t>(table.size()));
        while (table.size() % 4 != 0)
            table += '\0';
        offset += static_cast<std::uint32_t>(table.size());
        data += table;
    }
    return font + data;
}

std::string smallBitmapFont() {
    return "STARTFONT 2.1\n"
           "FONT -test-small-medium-r-normal--10-100-72-72-m-120-iso10646-1\n"
           "SIZE 10 72 72\n"
           "FONTBOUNDINGBOX 12 10 0 0\n"
           "STARTPROPERTIES 4\nPIXEL_SIZE 10\nFONT_ASCENT 10\nFONT_DESCENT 0\nDEFAULT_CHAR 65\nENDPROPERTIES\n"
           "CHARS 1\n"
           "STARTCHAR A\nENCODING 65\nSWIDTH 1200 0\nDWIDTH 12 0\nBBX 11 3 0 1\n"
           "BITMAP\nFFE0\n8020\nAAA0\nENDCHAR\n"
           "ENDFONT\n";
}
