// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_CONVERT_STILLHEADER_H
#define KOVANTA_EXAMPLES_CONVERT_STILLHEADER_H

#include <Kovanta/Image.h>

#include <string>

/// What a still's first bytes tell of it.
struct StillHeader {
    Ko::PIXEL_FORMAT format =
        Ko::PF_YCC444P;        ///< That of its samples; where nothing tells, one that all stills go into.
    bool transparency = false; ///< Beside the colours, where some pixel uses it.
    bool sixteenBits = false;
};

/// Does not complain: the reader knows better why a still cannot be read.
StillHeader readStillHeader(const std::string& name);

#endif
