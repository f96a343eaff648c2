// SPDX-License-Identifier: BSD-2-Clause
// What the library needs for video files, and nothing else.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

int main() {
    return avcodec_version() == 0 || avformat_version() == 0;
}
