// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoInputBase.h"

namespace Ko {

VideoInput::~VideoInput() = default;

void VideoInput::setLoop(bool) {}

} // namespace Ko
