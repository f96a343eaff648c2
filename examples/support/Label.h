// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_EXAMPLES_SUPPORT_LABEL_H
#define KOVANTA_EXAMPLES_SUPPORT_LABEL_H

#include <Kovanta/Font.h>
#include <Kovanta/Image.h>

#include <string>

namespace example {

/// White text on a dark field in the lower left corner, at a size that suits the frame.
class Label {
public:
    void draw(Ko::Image<>& frame, const std::string& text);

private:
    Ko::Font font;
    unsigned int size = 0;
};

} // namespace example

#endif
