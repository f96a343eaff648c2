#ifndef KOVANTA_TESTS_IMAGEFILE_STILLMAKERS_H
#define KOVANTA_TESTS_IMAGEFILE_STILLMAKERS_H

#include <string>

/// Makers of files that the library itself never writes, by bare libjpeg and libpng calls; random contents.
namespace test {

struct PngRecipe {
    int colorType;
    int bitDepth;
    bool interlaced = false;
    bool transparency = false; ///< With a tRNS chunk.
    unsigned width = 11;
    unsigned height = 9;
};

std::string makePng(const PngRecipe& recipe);

struct JpegRecipe {
    int components; ///< 1, 3 or 4.
    int inputSpace; ///< J_COLOR_SPACE of the random input.
    int fileSpace;  ///< J_COLOR_SPACE in the file.
    int horizontal; ///< Sampling factors of the first component.
    int vertical;
    bool progressive = false;
    bool arithmetic = false;
    unsigned width = 21;
    unsigned height = 13;
};

std::string makeJpeg(const JpegRecipe& recipe);

/// A chunk as PNG files have it; @p claimedLength may lie about the data.
std::string pngChunk(const std::string& type, const std::string& data, unsigned claimedLength);
/// A text chunk of a few kilobytes that takes @p size bytes unpacked.
std::string pngLongText(std::size_t size);
/// A PNG file's bytes with every checksum made right again, as far as the chunks can be followed.
std::string withRightChecksums(std::string bytes);
/// Signature and IHDR of a PNG that may be absurd.
std::string pngStart(unsigned width, unsigned height, int bitDepth, int colorType);

} // namespace test

#endif
