// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_VIDEOIN_FAKECAMERA_H
#define KOVANTA_TESTS_VIDEOIN_FAKECAMERA_H

#include "videoin/CameraOracle.h"

#include <linux/videodev2.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Cameras behind this program's own open, ioctl, mmap, munmap, poll and close, which the library's calls reach too,
/// and behind stand-ins for those of libv4l2, which are recorded with "v4l2 " before their names. A memory file stands
/// behind each opened device, so that descriptors and mappings are real and can be counted.
namespace fake {

struct Camera {
    std::uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING, deviceCapabilities = 0;
    std::string card = "Fake", bus = "platform:fake"; ///< 32 characters leave no room for the terminating zero.
    std::vector<std::uint32_t> formats = {V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_YUV420};
    bool substitutes = false; ///< A format that it lacks is answered with the first that it has.
    std::uint32_t maxWidth = 4096;
    std::uint32_t padding = 0;       ///< Bytes after each row.
    bool tellsStride = true;         ///< bytesperline is not 0.
    std::uint32_t missingBytes = 0;  ///< What the buffers are too short by.
    std::uint32_t maxBuffers = 32;   ///< 0 grants none.
    std::uint32_t reportedIndex = 0; ///< Added to the index of a dequeued buffer.
    bool endless = false;            ///< Enumerations never end.
    int input = 0;                   ///< Selected when the device is opened.
    std::uint32_t staleStride = 0;   ///< bytesperline then; smaller ones than wished for are not given.
    bool silent = false;             ///< No frame ever comes: poll waits its time out.
    /// Numbers and seconds of the frames; frames beyond have the first.
    std::vector<std::uint32_t> sequences = {0};
    std::vector<long> seconds = {0};
    v4l2_captureparm rate{};
};

constexpr int always = 0;

struct Fault {
    const char* call; ///< "open", "QUERYCAP", ..., "mmap", "munmap", "poll", "close", "v4l2_fd_open", "v4l2 DQBUF".
    int nth;          ///< Which call of this name fails, from 1, or always.
    int error;        ///< munmap and close take effect all the same, as the system's do.
};

const char* const memoryName = "kovanta-fake-camera"; ///< Of the memory files.

/// Everything, by device number; reset() between tests.
extern std::map<unsigned int, Camera> cameras;
extern std::vector<Fault> faults;
extern std::vector<std::string> calls; ///< In order, since the last reset().
extern v4l2_format lastFormat;         ///< As last given to S_FMT.

void reset();
/// The frame that the n-th DQBUF of a stream brings, n from 0.
camera::Frame frameNumber(unsigned int n);

} // namespace fake

#endif
