// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_FUZZ_PNGCHUNKS_H
#define KOVANTA_FUZZ_PNGCHUNKS_H

#include <string>

/// The pieces that PNG files are made of, right or wrong.
namespace fuzz {

/// A chunk as PNG files have it; @p claimedLength may lie about the data.
std::string pngChunk(const std::string& type, const std::string& data, unsigned claimedLength);
/// A PNG file's bytes with every checksum made right again, as far as the chunks can be followed.
std::string withRightChecksums(std::string bytes);

} // namespace fuzz

#endif
