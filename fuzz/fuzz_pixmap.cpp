// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Kovanta/ImageFile.h"
#include "Stills.h"

#include <algorithm>
#include <sstream>

namespace {

template <char type>
std::optional<fuzz::Announced> announced(const std::string& bytes) {
    std::istringstream stream(bytes);
    unsigned int width = 0;
    unsigned int height = 0;
    try {
        parseHeader(width, height, stream, type);
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return fuzz::Announced{width, height, type == '6' ? 3u : 1u};
}

/// The samples that are there, then zeros.
template <char type>
std::optional<test::Image> decode(const std::string& bytes) {
    std::istringstream stream(bytes);
    test::Image im(type == '6' ? Ko::PF_RGB : Ko::PF_Y);
    unsigned int width = 0;
    unsigned int height = 0;
    try {
        parseHeader(width, height, stream, type);
    } catch (const std::exception&) {
        return std::nullopt;
    }
    im.size(width, height);
    for (unsigned y = 0; im.plane[0].rows && y < height; ++y)
        for (unsigned x = 0; x < im.plane[0].width; ++x) {
            const int sample = stream.get();
            im.plane[0].view[y][x] = static_cast<unsigned char>(std::max(sample, 0));
        }
    return im;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    // A comment that the file never ends is read for ever.
    const std::size_t comment = text.rfind('#');
    if (comment != std::string::npos && text.find('\n', comment) == std::string::npos)
        return 0;
    const bool grey = text.size() > 1 && text[1] == '5';
    fuzz::readStill(grey ? fuzz::StillReader{Ko::readPgmImage, announced<'5'>, decode<'5'>}
                         : fuzz::StillReader{Ko::readPpmImage, announced<'6'>, decode<'6'>},
                    text, fuzz::Choices(bytes, size));
    return 0;
}
