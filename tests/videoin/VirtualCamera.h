// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_VIDEOIN_VIRTUALCAMERA_H
#define KOVANTA_TESTS_VIDEOIN_VIRTUALCAMERA_H

#include "videoin/CameraOracle.h"

#include <linux/videodev2.h>

#include <string>

/// The kernel's virtual camera drivers, for tests that run as root in a machine that has them.
namespace camera {

/// A loaded driver (vivid, v4l2loopback), unloaded at the end. Loading and unloading that fail throw.
class Driver {
public:
    Driver(const std::string& moduleName, const std::string& parameters);
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;
    ~Driver();

private:
    std::string name;
};

/// Controls of vivid.
enum Control : unsigned int {
    testPattern = 0x00f0f000,
    textMode = 0x00f0f001,
    dropped = 0x00f0f040, ///< Percentage of the frames.
    disconnect = 0x00f0f041,
    errorInBuffer = 0x00f0f042
};

/// A handle of the test's own on a device node, beside the library's. Calls that fail throw.
class Node {
public:
    explicit Node(unsigned int device);
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node();

    void set(Control control, int value);
    void setRate(unsigned int framesPerSecond);
    void selectInput(int input);
    void setFormat(unsigned int fourcc, unsigned int width, unsigned int height,
                   v4l2_buf_type type = V4L2_BUF_TYPE_VIDEO_CAPTURE);
    /// Feeds a frame to a loopback device.
    void writeFrame(const Frame& frame);

private:
    void request(unsigned long code, void* record, const char* what);
    int fd;
};

} // namespace camera

#endif
