#ifndef KOVANTA_SRC_IMAGEFILE_JPEGOBJECTS_H
#define KOVANTA_SRC_IMAGEFILE_JPEGOBJECTS_H

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

/// Stops a file of a few kilobytes whose many scans would each pass over a huge picture. Real files have 10 or so.
struct JpegScanLimit {
    jpeg_progress_mgr monitor;

    jpeg_progress_mgr* install();
    /// 500 for pictures up to 4 million pixels, fewer for larger ones, never below 50.
    static int mostScans(std::uint32_t width, std::uint32_t height);
};

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
