// SPDX-License-Identifier: BSD-2-Clause
#include <Kovanta/Kovanta.h>

#include <iostream>
#include <string>

// Uses something of every header, so that a symbol that the library forgot to export fails to link here.
int main() {
    Ko::Image<unsigned char> rgb(Ko::PF_RGB);
    rgb.size(8, 8);
    for (unsigned y = 0; y < 8; ++y)
        for (unsigned x = 0; x < 24; ++x)
            rgb.plane[0].view[y][x] = 255;
    Ko::Image<unsigned char> frame(Ko::PF_YCC444P);
    Ko::convertIm(frame, rgb);
    Ko::drawLine(frame, 0, 0, 7, 7, Ko::YCCColor{16, 128, 128});
    Ko::Timer timer;
    timer.stop();
    if (KOVANTA_VERSION < 100 || Ko::version() != std::to_string(KOVANTA_VERSION_MAJOR) + "." +
                                                      std::to_string(KOVANTA_VERSION_MINOR) + "." +
                                                      std::to_string(KOVANTA_VERSION_PATCH))
        return 1;
    { const boost::lock_guard<boost::mutex> lock(libAvMutex); }
    const bool right = frame.plane[0].view[0][1] == 235 && frame.plane[0].view[3][3] == 16;
    std::cout << fmt2string(frame.format) << (right ? ": drawn" : ": wrong") << "\n";
    return right ? 0 : 1;
}
