// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_JPEGOBJECTS_H
#define KOVANTA_SRC_IMAGEFILE_JPEGOBJECTS_H

#include "imagefile/File.h"
#include "imagefile/GuardedStep.h"
#include "util/Errors.h"

#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>

#include <csetjmp>
#include <cstdint>

namespace Ko {

/// libjpeg's standard error manager, with a jump in place of the end of the process. Warnings print as ever.
struct JpegErrors {
    jpeg_error_mgr manager; // first, since libjpeg hands its address back
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX];

    /// Sets the manager up and returns it.
    jpeg_error_mgr* install();
};

/// Where a compressor's bytes go. A failed write is left for OutputFile::close() to tell.
struct JpegDestination {
    jpeg_destination_mgr manager; // first, since libjpeg hands its address back
    OutputFile& file;
    JOCTET buffer[8192];

    explicit JpegDestination(OutputFile& output);
};

/// Stops a file of a few kilobytes whose many scans would each pass over a huge picture: all scans together may pass
/// 2^31 pixels, and 50 scans are always allowed. Real files have 10 or so.
struct JpegScanLimit {
    jpeg_progress_mgr monitor;

    jpeg_progress_mgr* install();
    static int mostScans(std::uint32_t width, std::uint32_t height);
};

/// How much memory libjpeg may take for a picture: a progressive file keeps two bytes a sample of the whole of it. That
/// is allowed up to 1 GiB, and beyond for as much as the picture itself takes and an eighth, which is what colour with
/// halved chroma needs. @p components of a pixel
long mostJpegMemory(std::uint32_t width, std::uint32_t height, int components);

/// A libjpeg object, jpeg_compress_struct or jpeg_decompress_struct, destroyed with this.
template <class Object, void (*destroy)(Object*)>
class JpegObject {
public:
    /// @param function named in the exceptions of run()
    explicit JpegObject(const char* function)
        : name(function) {
        object.err = errors.install();
    }
    ~JpegObject() { destroy(&object); }
    JpegObject(const JpegObject&) = delete;
    JpegObject& operator=(const JpegObject&) = delete;

    Object* operator->() { return &object; }

    /// Runs libjpeg calls (see guarded()) on the object.
    /// @throws std::runtime_error "[function]: libjpeg failed. (REASON)"
    template <class Step>
    void run(Step step) {
        Object* const target = &object;
        if (!guarded(errors.jump, [target, step] { step(target); }))
            throwRuntimeError(name, "libjpeg failed.", errors.message);
    }

private:
    const char* name;
    Object object{};
    JpegErrors errors{};
};

using JpegCompressor = JpegObject<jpeg_compress_struct, jpeg_destroy_compress>;
using JpegDecompressor = JpegObject<jpeg_decompress_struct, jpeg_destroy_decompress>;

} // namespace Ko

#endif
