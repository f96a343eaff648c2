// SPDX-License-Identifier: BSD-2-Clause
#include "BareLibraries.h"
#include "Kovanta/ImageFile.h"
#include "Stills.h"

#include <csetjmp>
#include <cstdio>
// jpeglib.h needs stdio.h before it.
#include <jpeglib.h>

namespace {

struct Jump {
    jpeg_error_mgr manager;
    std::jmp_buf target;
};

// The jump passes this function only, which holds nothing to destroy.
bool readHeader(jpeg_decompress_struct& jpeg, Jump& jump, const std::string& bytes) {
    if (setjmp(jump.target) != 0)
        return false;
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    return jpeg_read_header(&jpeg, TRUE) == JPEG_HEADER_OK;
}

std::optional<fuzz::Announced> announced(const std::string& bytes) {
    jpeg_decompress_struct jpeg{};
    Jump jump{};
    jpeg.err = jpeg_std_error(&jump.manager);
    jump.manager.error_exit = [](j_common_ptr object) {
        std::longjmp(reinterpret_cast<Jump*>(object->err)->target, 1);
    };
    const bool read = readHeader(jpeg, jump, bytes);
    const fuzz::Announced size{jpeg.image_width, jpeg.image_height, static_cast<std::uint64_t>(jpeg.num_components)};
    jpeg_destroy_decompress(&jpeg);
    return read ? std::optional(size) : std::nullopt;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::readStill({Ko::readJpegImage, announced, fuzz::decodeJpeg},
                    std::string(reinterpret_cast<const char*>(bytes), size), fuzz::Choices(bytes, size));
    return 0;
}
