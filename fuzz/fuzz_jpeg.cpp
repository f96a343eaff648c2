#include "ReadStill.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    for (std::size_t i = 0; i + 9 <= size; ++i)
        if (bytes[i] == 0xFF && bytes[i + 1] >= 0xC0 && bytes[i + 1] <= 0xCF && bytes[i + 1] != 0xC4 &&
            fuzzing::tooBig(fuzzing::bigEndian(bytes + i + 5, 2), fuzzing::bigEndian(bytes + i + 7, 2)))
            return 0;
    fuzzing::readStill(Ko::readJpegImage, bytes, size);
    return 0;
}
