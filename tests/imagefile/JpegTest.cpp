#include "Kovanta/ImageFile.h"

#include "BareStills.h"
#include "support/ConversionOracle.h"
#include "support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

using namespace test;
using testing::ThrowsMessage;

TEST(Jpeg, OtherColourSpacesAreRefused) {
    const std::string unsupported = "[readJpegImage]: Unsupported color space.";
    for (const auto& [name, text] :
         {std::pair{"cmyk", unsupported},
          {"ycck", unsupported},
          {"two_components", unsupported},
          {"rgb", "[readJpegImage]: libjpeg failed. (Unsupported color conversion request)"}}) {
        const Image before = randomImage(Ko::PF_YCC444P, 3, 2);
        Image im = before;
        const std::string path = std::string(STILLS "jpeg/") + name + ".jpg";
        EXPECT_THAT([&] { Ko::readJpegImage(im, path); }, ThrowsMessage<std::runtime_error>(text));
        EXPECT_EQ(difference(im, before), "");
    }
}

TEST(Jpeg, WritesOneKindOfFile) {
    const TempDirectory directory;
    const std::string path = directory.file("a.jpg");
    for (const Ko::PIXEL_FORMAT format : {Ko::PF_JFIF, Ko::PF_YCC444P}) {
        const Image im = randomImage(format, 37, 19);
        Ko::writeJpegImage(path, im);
        const Image jfif = inFormat(Ko::PF_JFIF, im);
        // Bare libjpeg makes the same bytes of the same settings.
        bench::BarePicture picture;
        picture.size(im.width, im.height);
        std::copy_n(jfif.plane[0].data, picture.bytes.size(), picture.bytes.begin());
        bench::writeBareJpeg(directory.file("bare.jpg"), picture);
        EXPECT_EQ(fileBytes(path), fileBytes(directory.file("bare.jpg"))) << fmt2string(format);
    }
}

TEST(Jpeg, SizesThatJpegHasNotAreRefused) {
    const TempDirectory directory;
    const std::string path = directory.write("a.jpg", "something older");
    EXPECT_THAT([&] { Ko::writeJpegImage(path, randomImage(Ko::PF_JFIF, 65501, 1)); },
                ThrowsMessage<std::runtime_error>(
                    "[writeJpegImage]: libjpeg failed. (Maximum supported image dimension is 65500 pixels)"));
    EXPECT_EQ(fileBytes(path), "something older");
}

} // namespace
