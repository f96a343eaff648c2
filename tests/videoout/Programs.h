// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_VIDEOOUT_PROGRAMS_H
#define KOVANTA_TESTS_VIDEOOUT_PROGRAMS_H

#include <string>
#include <vector>

// What others make of a video file: the ffmpeg and ffprobe programs.
namespace test {

struct Decoded {
    std::vector<int> numbers; ///< Of the numbered frames; -1 for what is none.
    std::string complaints;   ///< Warnings, also those about time stamps.
};
Decoded decode(const std::string& file, unsigned int width = 64, unsigned int height = 48);

/// The pictures without padding, in one of ffmpeg's formats.
std::string rawPictures(const std::string& file, const std::string& format = "yuv420p");

/// Entries of the video stream ("stream=time_base,nb_read_frames") or of its frames ("frame=pts"), in ffprobe's own
/// order, with commas between them; frames on a line each.
std::string probe(const std::string& file, const std::string& entries);

} // namespace test

#endif
