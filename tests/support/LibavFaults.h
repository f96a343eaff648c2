// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_LIBAVFAULTS_H
#define KOVANTA_TESTS_SUPPORT_LIBAVFAULTS_H

#include <functional>

// The program's own av_read_frame and others, for the library under test as well. A test that wants them links
// libav_faults.
namespace test {

enum class LibavCall { ReadFrame, SendPacket, WriteFrame, WriteTrailer };

/// While it lives, every call asks the fault first: an error that it gives is the call's result, 0 lets it through.
/// The fault is asked on the thread that calls, with the number of the call, from 0 on. One at a time for each call.
class LibavFault {
public:
    LibavFault(LibavCall call, std::function<int(int)> fault);
    ~LibavFault();
    LibavFault(const LibavFault&) = delete;
    LibavFault& operator=(const LibavFault&) = delete;

private:
    LibavCall which;
};

} // namespace test

#endif
