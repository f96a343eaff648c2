// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Choices.h"
#include "Kovanta/VideoInputCaptureV4L.h"
#include "support/Resources.h"
#include "videoin/FakeCamera.h"

#include <stdexcept>

// A driver that lies and fails in turn, behind every operation of the camera source.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    fake::reset();
    fake::Camera& camera = fake::cameras[0];
    const std::uint32_t formats[] = {V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_MJPEG, V4L2_PIX_FMT_GREY};
    camera.formats.clear();
    for (unsigned i = 1 + choices.below(3); i > 0; --i)
        camera.formats.push_back(formats[choices.below(4)]);
    camera.substitutes = choices.flip();
    camera.maxWidth = choices.below(80);
    camera.padding = choices.below(40);
    camera.tellsStride = choices.flip();
    camera.missingBytes = choices.below(4) == 0 ? choices.word() : 0;
    camera.maxBuffers = choices.below(6);
    camera.reportedIndex = choices.below(8) == 0 ? choices.word() : 0;
    if (choices.flip())
        camera.capabilities = choices.word() << 16 | choices.word();
    const char* const calls[] = {"open",     "QUERYCAP", "TRY_FMT",      "S_FMT",      "G_FMT",     "REQBUFS",
                                 "QUERYBUF", "QBUF",     "DQBUF",        "STREAMON",   "mmap",      "STREAMOFF",
                                 "munmap",   "close",    "v4l2_fd_open", "v4l2 DQBUF", "v4l2 mmap", "v4l2 REQBUFS"};
    for (unsigned i = choices.below(3); i > 0; --i)
        fake::faults.push_back({calls[choices.below(std::size(calls))], static_cast<int>(1 + choices.below(4)),
                                static_cast<int>(1 + choices.below(110))});
    {
        const fuzz::DescriptorWatch descriptors;
        Ko::VideoInputCaptureV4L source;
        Ko::Image frame(choices.flip() ? Ko::PF_YCC444P : Ko::PF_YCC420P);
        for (unsigned i = 2 + choices.below(10); i > 0; --i)
            try {
                switch (choices.below(7)) {
                case 0:
                    source.init(choices.below(2), choices.below(100), choices.below(100), choices.below(2));
                    break;
                case 1:
                    source.start();
                    break;
                case 2:
                    source.stop();
                    break;
                case 3:
                    source.close();
                    break;
                case 4:
                    source.setEmulatedFormats(choices.flip());
                    break;
                case 5:
                    source.setBufferCount(choices.below(8));
                    break;
                default:
                    source.read(frame);
                }
            } catch (const std::exception&) { // whatever the driver earns
            }
    }
    fuzz::require(test::mappedFiles(fake::memoryName) == 0, "a mapping stays");
    return 0;
}
