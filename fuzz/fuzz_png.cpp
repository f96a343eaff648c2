#include "ReadStill.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::size_t dimensions = 16; // in a file that starts with its IHDR
    if (size >= dimensions + 8 &&
        fuzzing::tooBig(fuzzing::bigEndian(bytes + dimensions, 4), fuzzing::bigEndian(bytes + dimensions + 4, 4)))
        return 0;
    fuzzing::readStill(Ko::readPngImage, bytes, size);
    return 0;
}
