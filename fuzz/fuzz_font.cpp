// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Choices.h"
#include "Kovanta/Font.h"
#include "support/MemoryFile.h"

#include <cstdint>
#include <stdexcept>

// A font from a file or from memory, drawn over guarded rows of several formats.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    const unsigned pixels = choices.below(choices.below(8) == 0 ? 200 : 40);
    static test::MemoryFile file;
    const fuzz::DescriptorWatch descriptors;
    Ko::Font font;
    try {
        if (choices.flip()) {
            file.hold(bytes, size);
            font.init(file.path(), pixels);
        } else {
            font.init(bytes, size, pixels);
        }
    } catch (const std::runtime_error&) { // what is there is drawn all the same
    }
    const Ko::PIXEL_FORMAT formats[] = {Ko::PF_YCC444P, Ko::PF_YCCA4444P, Ko::PF_YCC420P, Ko::PF_RGB};
    test::WrappedImage wrapped(formats[choices.below(4)], choices.below(60), choices.below(60));
    std::string text;
    for (int i = 0; i < 20; ++i)
        text += static_cast<char>(choices.byte());
    text += "AxW\nA";
    const int x = choices.coordinate();
    font.drawText(wrapped.im, text, {x, choices.coordinate()}, {200, 90, 160});
    font.drawText(wrapped.im, text, {1, 20}, {200, 90, 160});
    fuzz::require(wrapped.intact(), "text past the rows of an image");
    return 0;
}
