// SPDX-License-Identifier: BSD-2-Clause
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

JpegDestination& destinationOf(j_compress_ptr jpeg) {
    return *reinterpret_cast<JpegDestination*>(jpeg->dest);
}

void startBuffer(j_compress_ptr jpeg) {
    JpegDestination& destination = destinationOf(jpeg);
    destination.manager.next_output_byte = destination.buffer;
    destination.manager.free_in_buffer = sizeof destination.buffer;
}

boolean writeBuffer(j_compress_ptr jpeg) {
    JpegDestination& destination = destinationOf(jpeg);
    destination.file.write(destination.buffer, sizeof destination.buffer);
    startBuffer(jpeg);
    return TRUE;
}

void writeRest(j_compress_ptr jpeg) {
    JpegDestination& destination = destinationOf(jpeg);
    destination.file.write(destination.buffer, sizeof destination.buffer - destination.manager.free_in_buffer);
}

} // namespace

JpegDestination::JpegDestination(OutputFile& output)
    : manager{nullptr, 0, startBuffer, writeBuffer, writeRest}
    , file(output) {}

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
    // A scan goes by blocks, which are at most 32 x 32 pixels however thin the picture is.
    const auto padded = [](std::uint64_t pixels) {
        return std::max<std::uint64_t>((pixels + 31) / 32 * 32, 32);
    };
    return static_cast<int>(std::max<std::uint64_t>(pixelsPassed / (padded(width) * padded(height)), 50));
}

long mostJpegMemory(std::uint32_t width, std::uint32_t height, int components) {
    constexpr std::uint64_t always = std::uint64_t{1} << 30;
    const std::uint64_t picture = std::uint64_t{width} * height * static_cast<std::uint64_t>(components);
    return static_cast<long>(std::max(always, picture + picture / 8));
}

} // namespace Ko
