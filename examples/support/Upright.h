// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_UPRIGHT_H
#define KOVANTA_EXAMPLES_SUPPORT_UPRIGHT_H

#include <Kovanta/Rotate.h>
#include <Kovanta/VideoInput.h>

#include <string>

namespace example {

/// Pictures as they are meant to be seen: phones leave them as their sensor stood, and say in the file how to turn
/// them.
class Upright {
public:
    /// The next picture of a video. @return false at its end
    bool read(Ko::VideoInputVideoFile& video, Ko::Image<>& frame);
    /// A still. @return whether it was turned
    bool read(const std::string& still, Ko::Image<>& frame);

private:
    Ko::Image<> stored{Ko::PF_YCC444P};
};

/// Whether width and height change places.
inline bool isQuarterTurn(Ko::Orientation orientation) {
    return orientation >= Ko::OR_TRANSPOSED;
}

} // namespace example

#endif
