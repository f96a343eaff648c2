// SPDX-License-Identifier: BSD-2-Clause
#include "support/LibavFaults.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <dlfcn.h>

#include <atomic>
#include <utility>

namespace test {

namespace {

struct Slot {
    std::function<int(int)> fault;
    std::atomic<int> calls{0};
};
Slot slots[4];

/// Calls libav's own function, unless the fault has an error for the caller.
template <class... Arguments>
int pass(LibavCall call, const char* name, Arguments... arguments) {
    Slot& slot = slots[static_cast<int>(call)];
    if (slot.fault)
        if (const int error = slot.fault(slot.calls++))
            return error;
    return reinterpret_cast<int (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace

LibavFault::LibavFault(LibavCall call, std::function<int(int)> fault)
    : which(call) {
    slots[static_cast<int>(call)].calls = 0;
    slots[static_cast<int>(call)].fault = std::move(fault);
}

LibavFault::~LibavFault() {
    slots[static_cast<int>(which)].fault = nullptr;
}

} // namespace test

using test::LibavCall;

extern "C" {

int av_read_frame(AVFormatContext* container, AVPacket* packet) {
    return test::pass(LibavCall::ReadFrame, "av_read_frame", container, packet);
}

int avcodec_send_packet(AVCodecContext* decoder, const AVPacket* packet) {
    return test::pass(LibavCall::SendPacket, "avcodec_send_packet", decoder, packet);
}

int av_write_frame(AVFormatContext* container, AVPacket* packet) {
    return test::pass(LibavCall::WriteFrame, "av_write_frame", container, packet);
}

int av_write_trailer(AVFormatContext* container) {
    return test::pass(LibavCall::WriteTrailer, "av_write_trailer", container);
}

} // extern "C"
