// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/VirtualCamera.h"

#include "support/TempDirectory.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace camera {

namespace {

void check(long result, const std::string& what) {
    if (result == -1)
        throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

Driver::Driver(const std::string& moduleName, const std::string& parameters)
    : name(moduleName) {
    const char* folder = std::getenv("KOVANTA_VM_MODULES");
    if (!folder)
        throw std::runtime_error("KOVANTA_VM_MODULES is not set: run this program through scripts/camera-vm.sh");
    const std::string module = test::fileBytes(std::string(folder) + "/" + name + ".ko");
    check(::syscall(SYS_init_module, module.data(), module.size(), parameters.c_str()), "loading " + name);
}

Driver::~Driver() {
    if (::syscall(SYS_delete_module, name.c_str(), O_NONBLOCK) == -1) {
        std::cerr << "Cannot unload " << name << ": something still has it open\n";
        std::abort();
    }
}

Node::Node(unsigned int device)
    : fd(::open(("/dev/video" + std::to_string(device)).c_str(), O_RDWR)) {
    check(fd, "opening video" + std::to_string(device));
}

Node::~Node() {
    ::close(fd);
}

void Node::request(unsigned long code, void* record, const char* what) {
    check(::ioctl(fd, code, record), what);
}

void Node::set(Control control, int value) {
    v4l2_control record{control, value};
    request(VIDIOC_S_CTRL, &record, "S_CTRL");
}

void Node::setRate(unsigned int framesPerSecond) {
    v4l2_streamparm record{};
    record.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    record.parm.capture.timeperframe = {1, framesPerSecond};
    request(VIDIOC_S_PARM, &record, "S_PARM");
}

void Node::selectInput(int input) {
    request(VIDIOC_S_INPUT, &input, "S_INPUT");
}

void Node::setFormat(unsigned int fourcc, unsigned int width, unsigned int height, v4l2_buf_type type) {
    v4l2_format record{};
    record.type = type;
    record.fmt.pix.pixelformat = fourcc;
    record.fmt.pix.width = width;
    record.fmt.pix.height = height;
    request(VIDIOC_S_FMT, &record, "S_FMT");
}

void Node::writeFrame(const Frame& frame) {
    check(::write(fd, frame.bytes.data(), frame.bytes.size()), "write");
}

} // namespace camera
