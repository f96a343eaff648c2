#ifndef KOVANTA_FUZZ_READSTILL_H
#define KOVANTA_FUZZ_READSTILL_H

#include "Kovanta/ImageFile.h"
#include "support/MemoryFile.h"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace fuzzing {

/// Reads a file with those bytes into a few formats; stops when a failed read changed the image.
inline void readStill(void (*read)(Ko::Image<unsigned char>&, const std::string&), const std::uint8_t* bytes,
                      std::size_t size) {
    static testing_support::MemoryFile file;
    file.hold(bytes, size);
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_YCC444P, Ko::PF_RGB, Ko::PF_Y, Ko::PF_YCC420P}) {
        Ko::Image<unsigned char> im(format);
        im.size(2, 2, true);
        const unsigned char* const data = im.plane[0].data;
        try {
            read(im, file.path());
        } catch (const std::runtime_error&) {
            if (im.width != 2 || im.height != 2 || im.plane[0].data != data)
                std::abort();
        } catch (const std::exception&) {
            // a refused conversion resizes; a number that is none says so in its own type
        }
    }
}

/// Big pictures cost time and memory without showing anything new.
inline bool tooBig(std::uint64_t width, std::uint64_t height) {
    return width > 4096 || height > 4096 || width * height > 1 << 20;
}

inline std::uint64_t bigEndian(const std::uint8_t* bytes, std::size_t n) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < n; ++i)
        value = value << 8 | bytes[i];
    return value;
}

} // namespace fuzzing

#endif
