// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_LIBAV_NAMES_H
#define KOVANTA_SRC_LIBAV_NAMES_H

#include <string>

namespace Ko::libav {

/// What libav is given for a name. libav takes what stands before a colon for a protocol; where it knows none of that
/// name ("12:30:05.avi", "cam1:front.mp4"), it is told that this is a file.
std::string urlOf(const std::string& filename);

} // namespace Ko::libav

#endif
