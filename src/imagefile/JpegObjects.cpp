#include "imagefile/JpegObjects.h"

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
    if (reinterpret_cast<j_decompress_ptr>(object)->input_scan_number <= JpegScanLimit::mostScans)
        return;
    JpegErrors& errors = errorsOf(object);
    std::snprintf(errors.message, sizeof errors.message, "More than %d scans", JpegScanLimit::mostScans);
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

} // namespace Ko
