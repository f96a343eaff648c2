// SPDX-License-Identifier: BSD-2-Clause
#include "PngChunks.h"

#include <zlib.h>

// jpeglib.h needs stdio.h before it.

namespace fuzz {

namespace {

std::string bigEndian(unsigned value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 255);
    return bytes;
}

} // namespace

std::string pngChunk(const std::string& type, const std::string& data, unsigned claimedLength) {
    const std::string body = type + data;
    const auto crc = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return bigEndian(claimedLength) + body + bigEndian(static_cast<unsigned>(crc));
}

std::string withRightChecksums(std::string bytes) {
    std::size_t at = 8;
    while (at + 12 <= bytes.size()) {
        std::size_t length = 0;
        for (std::size_t i = 0; i < 4; ++i)
            length = length << 8 | static_cast<unsigned char>(bytes[at + i]);
        if (length > bytes.size() - at - 12)
            break;
        const std::string chunk =
            pngChunk(bytes.substr(at + 4, 4), bytes.substr(at + 8, length), static_cast<unsigned>(length));
        bytes.replace(at, chunk.size(), chunk);
        at += chunk.size();
    }
    return bytes;
}

} // namespace fuzz
