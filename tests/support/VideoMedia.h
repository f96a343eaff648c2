// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_VIDEOMEDIA_H
#define KOVANTA_TESTS_SUPPORT_VIDEOMEDIA_H

#include "Kovanta/Image.h"
#include "support/TempDirectory.h"

#include <string>
#include <vector>

namespace test {

/// Frames that carry their index as eight dark or bright fields, 4 by 2, coarse enough for any codec, with a fine
/// pattern on top; the chroma is about Cb 90, Cr 170 all over.
struct NumberedFrames {
    int width = 64;
    int height = 48;
    int count = 40; ///< at most 256
    std::string rate = "25";
    int firstIndex = 0;
};

/// The index that a frame carries, in planar 4:4:4, studio range; -1 when it carries none or its chroma is wrong.
int frameIndex(const Ko::Image<unsigned char>& frame);

/// The numbered frame as planar 4:2:0, exactly as it is encoded.
Ko::Image<unsigned char> numberedFrame(int index, int width = 64, int height = 48);

/// The indices that a whole video of numbered frames carries.
std::vector<int> indices(int count, int first = 0);

/// Encodes numbered frames with the ffmpeg program.
/// @param options between the raw input and the file's name, such as "-c:v mpeg4 -bf 2"
/// @param inputs placed before the raw input, such as a generator of sound
/// @throws std::runtime_error when ffmpeg fails
void encodeNumbered(const std::string& file, const NumberedFrames& frames, const std::string& options,
                    const std::string& inputs = "");

} // namespace test

#endif
