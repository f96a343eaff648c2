#include "ReadStill.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    // A comment that the file never ends is read for ever.
    const std::size_t comment = text.rfind('#');
    if (comment != std::string::npos && text.find('\n', comment) == std::string::npos)
        return 0;
    for (const char type : {'5', '6'}) {
        std::istringstream stream(text);
        unsigned int width = 0;
        unsigned int height = 0;
        try {
            parseHeader(width, height, stream, type);
        } catch (const std::exception&) {
            width = height = 0; // the reader will say the same
        }
        if (!fuzzing::tooBig(width, height))
            fuzzing::readStill(type == '5' ? Ko::readPgmImage : Ko::readPpmImage, bytes, size);
    }
    return 0;
}
