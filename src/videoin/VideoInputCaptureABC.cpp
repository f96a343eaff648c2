// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInputCaptureABC.h"

namespace Ko {

VideoInputCaptureABC::~VideoInputCaptureABC() = default;

bool VideoInputCaptureABC::eof() const {
    return false;
}

void VideoInputCaptureABC::start() {}

void VideoInputCaptureABC::stop() {}

void VideoInputCaptureABC::setBufferCount(unsigned int) {}

} // namespace Ko
