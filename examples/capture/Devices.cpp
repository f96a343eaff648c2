// SPDX-License-Identifier: BSD-2-Clause
#include "Devices.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace {

constexpr unsigned int deviceNumbers = 64;
const std::string devicePrefix = "/dev/video";

class Device {
public:
    explicit Device(unsigned int number)
        : descriptor(::open((devicePrefix + std::to_string(number)).c_str(), O_RDWR | O_CLOEXEC)) {}
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    ~Device() {
        if (descriptor != -1)
            ::close(descriptor);
    }

    bool isOpen() const { return descriptor != -1; }
    bool ask(unsigned long request, void* record) const { return ::ioctl(descriptor, request, record) != -1; }

    /// Calls visit(record) for index 0, 1, ... until the driver refuses.
    template <class Record, class Visitor>
    void enumerate(unsigned long request, Record record, Visitor visit) const {
        for (record.index = 0; record.index < 1000 && ::ioctl(descriptor, request, &record) != -1; ++record.index)
            visit(record);
    }

private:
    int descriptor;
};

std::string text(const __u8* field, std::size_t size) {
    const char* const begin = reinterpret_cast<const char*>(field);
    return {begin, ::strnlen(begin, size)};
}

bool isRead(const v4l2_fmtdesc& format) {
    return format.pixelformat == V4L2_PIX_FMT_YUV420 || format.pixelformat == V4L2_PIX_FMT_YUYV;
}

void printRates(const Device& device, const v4l2_frmsizeenum& size) {
    v4l2_frmivalenum interval{};
    interval.pixel_format = size.pixel_format;
    interval.width = size.discrete.width;
    interval.height = size.discrete.height;
    device.enumerate(VIDIOC_ENUM_FRAMEINTERVALS, interval, [](const v4l2_frmivalenum& found) {
        if (found.type == V4L2_FRMIVAL_TYPE_DISCRETE && found.discrete.numerator != 0)
            std::cout << (found.index == 0 ? " at " : ", ")
                      << static_cast<double>(found.discrete.denominator) / found.discrete.numerator;
    });
}

void printSizes(const Device& device, unsigned int pixelFormat) {
    v4l2_frmsizeenum size{};
    size.pixel_format = pixelFormat;
    device.enumerate(VIDIOC_ENUM_FRAMESIZES, size, [&device](const v4l2_frmsizeenum& found) {
        if (found.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            std::cout << "    " << found.discrete.width << "x" << found.discrete.height;
            printRates(device, found);
        } else {
            std::cout << "    " << found.stepwise.min_width << "x" << found.stepwise.min_height << " to "
                      << found.stepwise.max_width << "x" << found.stepwise.max_height;
        }
        std::cout << "\n";
    });
}

} // namespace

std::optional<unsigned int> deviceNumber(const std::string& word) {
    std::error_code missing; // then it is what it says
    std::string digits = std::filesystem::weakly_canonical(word, missing).string();
    if (word.compare(0, 5, "/dev/") == 0 && digits.compare(0, devicePrefix.size(), devicePrefix) == 0)
        digits = digits.substr(devicePrefix.size());
    else
        digits = word;
    unsigned int number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

void listDevices() {
    bool any = false;
    for (unsigned int number = 0; number < deviceNumbers; ++number) {
        const Device device(number);
        const int error = errno;
        v4l2_capability capability{};
        std::string what;
        if (device.isOpen() && device.ask(VIDIOC_QUERYCAP, &capability))
            what = text(capability.card, sizeof capability.card) + " " +
                   text(capability.bus_info, sizeof capability.bus_info);
        else if (device.isOpen() || error == ENOENT) // something else, or nothing
            continue;
        else
            what = std::strerror(error) + std::string(error == EACCES ? " (are you in the group video?)" : "");
        std::cout << number << ": " << what << "\n";
        any = true;
    }
    if (!any)
        std::cout << "No camera found.\n";
}

std::string otherFormats(unsigned int number) {
    const Device device(number);
    v4l2_fmtdesc format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    std::string names;
    bool any = false;
    device.enumerate(VIDIOC_ENUM_FMT, format, [&](const v4l2_fmtdesc& found) {
        any = any || isRead(found);
        names += (names.empty() ? "" : ", ") + text(found.description, sizeof found.description);
    });
    return any ? "" : names;
}

void listFormats(unsigned int number) {
    const Device device(number);
    if (!device.isOpen())
        throw std::system_error(errno, std::generic_category(), devicePrefix + std::to_string(number));
    v4l2_input input{};
    device.enumerate(VIDIOC_ENUMINPUT, input, [](const v4l2_input& found) {
        std::cout << "input " << found.index << ": " << text(found.name, sizeof found.name) << "\n";
    });
    v4l2_fmtdesc format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    device.enumerate(VIDIOC_ENUM_FMT, format, [&device](const v4l2_fmtdesc& found) {
        std::cout << "format " << text(found.description, sizeof found.description)
                  << (isRead(found) ? "\n" : ": only with --emulated, if at all\n");
        if (isRead(found))
            printSizes(device, found.pixelformat);
    });
}
