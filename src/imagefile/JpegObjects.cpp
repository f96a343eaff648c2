#include "imagefile/JpegObjects.h"

#include <algorithm>

namespace Ko {

namespace {

JpegErrors& errorsOf(j_common_ptr object) {
    return *reinterpret_cast<JpegErrors*>(object->err);
}

[[noreturn]] void jumpWithMessage(j_common_ptr object) {
    JpegErrors& errors = errorsOf(object);
    errors.manager.format_message(object, errors.message);
    std::longjmp(errors.jump, 1); // NOLINT(cert-err52-cpp)
}

void stopEndlessScans(j_common_ptr object) {
    // Installed on decompressors only.
    const auto* jpeg = reinterpret_cast<j_decompress_ptr>(object);
    const int most = JpegScanLimit::mostScans(jpeg->image_width, jpeg->image_height);
    if (jpeg->input_scan_number <= most)
        return;
    JpegErrors& errors = errorsOf(object);
    std::snprintf(errors.message, sizeof errors.message, "More than %d scans", most);
    std::longjmp(errors.jump, 1); // NOLINT(cert-err52-cpp)
}

} // namespace

jpeg_error_mgr* JpegErrors::install() {
    jpeg_std_error(&manager);
    manager.error_exit = jumpWithMessage;
    return &manager;
}

jpeg_progress_mgr* JpegScanLimit::install() {
    monitor.progress_monitor = stopEndlessScans;
    return &monitor;
}

int JpegScanLimit::mostScans(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint64_t pixelsPassed = std::uint64_t{1} << 31;
    const std::uint64_t pixels = std::max<std::uint64_t>(std::uint64_t{width} * height, 1);
    return static_cast<int>(std::clamp<std::uint64_t>(pixelsPassed / pixels, 50, 500));
}

} // namespace Ko
