// Writes the seeds of the fuzz targets: make_seeds DIRECTORY.

#include "imagefile/StillMakers.h"

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>
#include <png.h>

#include <filesystem>
#include <fstream>
#include <string>

using testing_support::makeJpeg;
using testing_support::makePng;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make_seeds DIRECTORY\n", stderr);
        return 1;
    }
    int number = 0;
    const auto write = [&](const char* target, const std::string& bytes) {
        const std::filesystem::path directory = std::filesystem::path(argv[1]) / target;
        std::filesystem::create_directories(directory);
        std::ofstream(directory / ("seed" + std::to_string(number++)), std::ios::binary) << bytes;
    };
    write("fuzz_pixmap", "P6\n# seed\n2 1\n255\nabcdef");
    write("fuzz_pixmap", "P5 3 2 255\nabcdef");
    write("fuzz_pixmap", "P5 -1 4294967296 #\n15 ");
    for (const int type : {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_PALETTE, PNG_COLOR_TYPE_GRAY_ALPHA,
                           PNG_COLOR_TYPE_RGB_ALPHA})
        for (const bool interlaced : {false, true})
            write("fuzz_png", makePng({type, type == PNG_COLOR_TYPE_PALETTE ? 2 : 8, interlaced,
                                       (type & PNG_COLOR_MASK_ALPHA) == 0, 6, 5}));
    write("fuzz_png", makePng({PNG_COLOR_TYPE_GRAY, 1, false, false, 9, 3}));
    write("fuzz_png", makePng({PNG_COLOR_TYPE_RGB_ALPHA, 16, false, false, 3, 3}));
    write("fuzz_jpeg", makeJpeg({1, JCS_GRAYSCALE, JCS_GRAYSCALE, 1, 1, false, false, 9, 9}));
    write("fuzz_jpeg", makeJpeg({4, JCS_CMYK, JCS_YCCK, 1, 1, false, false, 9, 9}));
    write("fuzz_jpeg", makeJpeg({3, JCS_RGB, JCS_RGB, 1, 1, false, false, 9, 9}));
    for (const bool progressive : {false, true})
        for (const bool arithmetic : {false, true})
            write("fuzz_jpeg", makeJpeg({3, JCS_YCbCr, JCS_YCbCr, 2, 2, progressive, arithmetic, 17, 9}));
    return 0;
}
