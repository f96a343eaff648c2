#ifndef KOVANTA_TESTS_IMAGEFILE_PNGCHUNKS_H
#define KOVANTA_TESTS_IMAGEFILE_PNGCHUNKS_H

#include <string>

/// The pieces that PNG files are made of, right or wrong.
namespace test {

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
