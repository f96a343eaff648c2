#include "ReadStill.h"

#include "imagefile/StillMakers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::size_t dimensions = 16; // in a file that starts with its IHDR
    if (size >= dimensions + 8 &&
        fuzzing::tooBig(fuzzing::bigEndian(bytes + dimensions, 4), fuzzing::bigEndian(bytes + dimensions + 4, 4)))
        return 0;
    fuzzing::readStill(Ko::readPngImage, bytes, size);
    // Nearly every change dies at a checksum, so try again with right ones.
    const std::string right =
        testing_support::withRightChecksums(std::string(reinterpret_cast<const char*>(bytes), size));
    fuzzing::readStill(Ko::readPngImage, reinterpret_cast<const std::uint8_t*>(right.data()), right.size());
    return 0;
}
