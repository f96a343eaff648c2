// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Images.h"
#include "Kovanta/ImageFile.h"
#include "support/ConversionOracle.h"
#include "support/MemoryFile.h"

#include <stdexcept>

namespace {

struct Format {
    void (*write)(const std::string&, const Ko::Image<>&);
    void (*read)(Ko::Image<>&, const std::string&);
    Ko::PIXEL_FORMAT exchanged;
    bool exact;
};

constexpr Format formats[] = {{Ko::writePpmImage, Ko::readPpmImage, Ko::PF_RGB, true},
                              {Ko::writePgmImage, Ko::readPgmImage, Ko::PF_Y, true},
                              {Ko::writePngImage, Ko::readPngImage, Ko::PF_RGB, true},
                              {Ko::writeJpegImage, Ko::readJpegImage, Ko::PF_JFIF, false}};

} // namespace

// Images of every make into files of every format, read back where that tells something.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    static test::MemoryFile file;
    fuzz::AnyImage source(choices);
    const test::Image& im = source.image();
    const Format& format = formats[choices.below(4)];
    const fuzz::DescriptorWatch descriptors;
    file.hold("");
    try {
        format.write(file.path(), im);
    } catch (const std::logic_error&) {
        return 0;
    } catch (const std::runtime_error&) {
        fuzz::require(im.width == 0 || im.height == 0 || !format.exact, "a picture was refused");
        return 0;
    }
    fuzz::require(source.intact(), "written past the rows of the source");
    fuzz::require(source.unchanged(), "the source changed");
    test::Image back(format.exchanged);
    format.read(back, file.path());
    fuzz::require(back.width == im.width && back.height == im.height, "another size came back");
    const bool even = im.width % 2 == 0 && im.height % 2 == 0;
    if (format.exact && source.plain() && even && im.width != 0 && im.height != 0)
        fuzz::requireSame(back, test::inFormat(format.exchanged, im), "another picture came back");
    return 0;
}
