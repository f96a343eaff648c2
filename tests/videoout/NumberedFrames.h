#ifndef KOVANTA_TESTS_VIDEOOUT_NUMBEREDFRAMES_H
#define KOVANTA_TESTS_VIDEOOUT_NUMBEREDFRAMES_H

#include "Kovanta/Image.h"

#include <string>
#include <vector>

/// Frames that carry their number in blocks of black and white and in their tint, coarse enough to survive any encoder.
namespace numbered {

/// Frame @p n (0 to 127) as PF_YCC444P, PF_YCC420P or PF_Y (full range; without the tint).
Ko::Image<unsigned char> frame(unsigned int n, unsigned int width, unsigned int height,
                               Ko::PIXEL_FORMAT format = Ko::PF_YCC444P);

/// What the ffmpeg program makes of a file.
struct Decoded {
    std::vector<int> numbers; ///< Of each frame; -1 where it is not one of ours, -2 where only the tint is wrong.
    std::string yuv;          ///< The pictures as planar 4:2:0, without padding.
    std::string complaints;   ///< Warnings while decoding and while counting time stamps.
};
Decoded decode(const std::string& file, unsigned int width, unsigned int height, bool tinted = true);

/// Entries of the video stream ("time_base,nb_read_frames"), with commas between, in ffprobe's own order.
std::string probe(const std::string& file, const std::string& entries);
/// Presentation times of all frames, in units of the stream's time base.
std::vector<long> presentationTimes(const std::string& file);

} // namespace numbered

#endif
