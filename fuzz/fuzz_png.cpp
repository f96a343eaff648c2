// SPDX-License-Identifier: BSD-2-Clause
#include "BareLibraries.h"
#include "Kovanta/ImageFile.h"
#include "PngChunks.h"
#include "Stills.h"

namespace {

std::optional<fuzz::Announced> announced(const std::string& bytes) {
    const auto number = [&](std::size_t at, std::size_t n) {
        std::uint64_t value = 0;
        for (std::size_t i = at; i < at + n; ++i)
            value = value << 8 | static_cast<unsigned char>(bytes[i]);
        return value;
    };
    // In a file that starts with its IHDR. What libpng itself refuses, the reader need not call too large.
    if (bytes.size() < 33 || number(8, 4) != 13 || bytes.substr(12, 4) != "IHDR")
        return std::nullopt;
    const unsigned samples[] = {1, 0, 3, 3, 1, 0, 4};
    const std::uint64_t type = number(25, 1);
    return fuzz::Announced{number(16, 4), number(20, 4), type < 7 ? samples[type] : 0};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string file(reinterpret_cast<const char*>(bytes), size);
    const fuzz::StillReader reader{Ko::readPngImage, announced, fuzz::decodePng};
    fuzz::readStill(reader, file, fuzz::Choices(bytes, size));
    // Nearly every change dies at a checksum, so try again with right ones.
    fuzz::readStill(reader, fuzz::withRightChecksums(file), fuzz::Choices(bytes, size));
    return 0;
}
