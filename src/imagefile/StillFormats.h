// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_STILLFORMATS_H
#define KOVANTA_SRC_IMAGEFILE_STILLFORMATS_H

#include "Kovanta/Image.h"

#include <string>

namespace Ko {

/// What readImage() and writeImage() call for a file name's extension.
struct StillFormat {
    const char* extension; ///< In lower case, with its dot.
    void (*read)(Image<>& im, const std::string& name);
    void (*write)(const std::string& name, const Image<>& im);
};

/// The format of an extension (in lower case, with its dot), or null: the one list of all there are.
const StillFormat* findStillFormat(const std::string& extension);

} // namespace Ko

#endif
