// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Choices.h"
#include "Kovanta/VideoInputVideoFile.h"
#include "support/MemoryFile.h"

#include <cstdint>
#include <stdexcept>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

// A video file of any container that libav finds in the bytes: read, sought, looped.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(std::size_t{1} << 26);
    fuzz::Choices choices(bytes, size);
    const unsigned steps = 4 + choices.below(12);
    static test::MemoryFile file;
    const fuzz::DescriptorWatch descriptors;
    file.hold(bytes, size);
    try {
        Ko::VideoInputVideoFile source;
        source.setLoop(choices.flip());
        source.setAnyFormat(choices.flip());
        source.open(file.path());
        if (std::uint64_t{source.getWidth()} * source.getHeight() > 1 << 18)
            return 0;
        constexpr Ko::PIXEL_FORMAT formats[] = {Ko::PF_YCC444P, Ko::PF_YCC420P, Ko::PF_RGB};
        Ko::Image frame(formats[choices.below(3)]);
        for (unsigned i = 0; i < steps; ++i) {
            if (choices.below(3) != 0) {
                const bool read = source.read(frame);
                fuzz::require(!read || (frame.width > 0 && frame.height > 0), "a picture without pixels");
                fuzz::require(read || source.eof(), "no picture before the end");
            } else {
                const long offset = choices.flip() ? static_cast<long>(choices.word()) - 100 : choices.below(30);
                source.seek(offset, static_cast<Ko::VideoPosId>(choices.below(3)));
            }
            source.tell();
            source.getLength();
        }
    } catch (const std::logic_error&) { // a pair of formats without a conversion
    } catch (const std::runtime_error&) {
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
