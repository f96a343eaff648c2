#include "draw/SmallFonts.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <vector>

namespace {

/// Big-endian, 16 bits each.
std::string words(const std::vector<int>& values) {
    std::string bytes;
    for (const int v : values)
        bytes += {static_cast<char>(v >> 8 & 255), static_cast<char>(v & 255)};
    return bytes;
}

std::string padded(std::string bytes) {
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return bytes;
}

/// An outline of one closed contour of straight lines.
std::string outline(const std::vector<int>& xs, const std::vector<int>& ys) {
    const std::string onCurve(xs.size(), '\1'); // both coordinates as words
    const auto steps = [](std::vector<int> points) {
        std::adjacent_difference(points.begin(), points.end(), points.begin());
        return words(points);
    };
    const auto x = std::minmax_element(xs.begin(), xs.end());
    const auto y = std::minmax_element(ys.begin(), ys.end());
    return padded(words({1, *x.first, *y.first, *x.second, *y.second, static_cast<int>(xs.size()) - 1, 0}) + onCurve +
                  steps(xs) + steps(ys));
}

} // namespace

std::string smallTrueType(int unitsPerEm) {
    const std::string box = outline({100, 100, 500, 500}, {0, 700, 700, 0});
    const std::string triangle = outline({-90, 300, 690}, {-150, 800, -150});
    const std::string zeros(16, '\0');
    const int half = static_cast<int>(box.size() / 2);
    const std::map<std::string, std::string> tables = {
        {"glyf", box + triangle},
        {"loca", words({0, half, half + static_cast<int>(triangle.size() / 2)})},
        {"head", words({1, 0, 1, 0, 0, 0, 0x5f0f, 0x3cf5, 0, unitsPerEm}) + zeros +
                     words({-90, -150, 690, 800, 0, 6, 2, 0, 0})},
        {"hhea", words({1, 0, 800, -200, 0, 650, -90, 0, 690, 1, 0, 0, 0, 0, 0, 0, 0, 2})},
        {"hmtx", words({600, 100, 650, -90})},
        {"maxp", words({1, 0, 2, 4, 1, 0, 0, 1}) + zeros},
        // Format 4 with a segment for 'A' and the closing one.
        {"cmap", words({0, 1, 3, 1, 0, 12, 4, 32, 0, 4, 4, 1, 0, 'A', 0xffff, 0, 'A', 0xffff, 1 - 'A', 1, 0, 0})}};

    const int count = static_cast<int>(tables.size());
    std::string font = words({1, 0, count, 64, 2, count * 16 - 64});
    std::string data;
    for (const auto& [tag, table] : tables) {
        const int offset = 12 + count * 16 + static_cast<int>(data.size());
        font += tag + words({0, 0, 0, offset, 0, static_cast<int>(table.size())});
        data += padded(table);
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
