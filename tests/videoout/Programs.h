#ifndef KOVANTA_TESTS_VIDEOOUT_PROGRAMS_H
#define KOVANTA_TESTS_VIDEOOUT_PROGRAMS_H

#include <string>
#include <vector>

// What others make of a video file: the ffmpeg and ffprobe programs.
namespace test {

struct Decoded {
    std::vector<int> numbers; ///< Of the numbered frames; -1 for what is none.
    std::string yuv;          ///< The pictures as planar 4:2:0, without padding.
    std::string complaints;   ///< Warnings, also those about time stamps.
};
Decoded decode(const std::string& file, unsigned int width, unsigned int height);

/// Entries of the video stream ("stream=time_base,nb_read_frames") or of its frames ("frame=pts"), with commas between
/// them in ffprobe's own order; frames on a line each.
std::string probe(const std::string& file, const std::string& entries);

} // namespace test

#endif
