// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoOutputBase.h"

namespace Ko {

VideoOutput::~VideoOutput() = default;

} // namespace Ko
