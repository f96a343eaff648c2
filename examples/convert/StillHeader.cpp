// SPDX-License-Identifier: BSD-2-Clause
#include "StillHeader.h"

#include <cstdint>
#include <fstream>

namespace {

/// @return the number that the next bytes are, the first of them the highest
template <class Number>
Number take(std::istream& file) {
    Number number = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i)
        number = static_cast<Number>(number << 8 | (file.get() & 0xff));
    return number;
}

/// From behind the signature on.
StillHeader readPng(std::istream& file) {
    constexpr std::uint32_t transparencyChunk = 0x74524e53; // "tRNS"
    constexpr std::uint32_t pixelChunk = 0x49444154;        // "IDAT"
    file.seekg(24);
    StillHeader header;
    header.sixteenBits = file.get() == 16;
    const int kind = file.get();
    const bool grey = kind == 0 || kind == 4;
    header.transparency = (kind & 4) != 0;
    header.format = grey ? Ko::PF_Y : kind == 6 ? Ko::PF_RGBA : Ko::PF_RGB;
    file.seekg(33); // the chunk behind the header
    while (file) {
        const auto length = take<std::uint32_t>(file);
        const auto chunk = take<std::uint32_t>(file);
        if (chunk == pixelChunk)
            break;
        header.transparency = header.transparency || (file && chunk == transparencyChunk);
        file.seekg(std::streamoff{length} + 4, std::ios::cur);
    }
    return header;
}

/// From behind the first marker on.
StillHeader readJpeg(std::istream& file) {
    while (file.get() == 0xff) {
        int marker = file.get();
        while (marker == 0xff) // filling
            marker = file.get();
        const auto length = take<std::uint16_t>(file);
        const bool frame = marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
        if (!frame) {
            file.seekg(length - 2, std::ios::cur);
            continue;
        }
        file.seekg(5, std::ios::cur); // precision, height, width
        return {file.get() == 1 ? Ko::PF_Y : Ko::PF_JFIF};
    }
    return {};
}

} // namespace

StillHeader readStillHeader(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    const auto start = take<std::uint16_t>(file);
    StillHeader header;
    if (start == 0x8950)
        header = readPng(file);
    else if (start == 0xffd8)
        header = readJpeg(file);
    else if (start == 0x5035) // "P5"
        header.format = Ko::PF_Y;
    else if (start == 0x5036) // "P6"
        header.format = Ko::PF_RGB;
    return file ? header : StillHeader();
}
