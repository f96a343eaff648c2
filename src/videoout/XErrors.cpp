// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/XErrors.h"

#include "util/Errors.h"

#include <X11/Xlib.h>

#include <string>
#include <utility>

namespace Ko {
namespace XErrors {

namespace {

thread_local const char* operation = nullptr;
thread_local char lastError[128] = ""; // the first since the last check

bool installed = false;
bool lost = false;
::XErrorHandler earlierHandler = nullptr;
::XIOErrorHandler earlierIOHandler = nullptr;

[[noreturn]] void throwLost(const char* name) {
    throwRuntimeError(name, "Lost the connection to the X server.");
}

int onError(::Display* display, ::XErrorEvent* event) {
    if (!operation)
        return earlierHandler ? earlierHandler(display, event) : 0;
    if (lastError[0] == '\0')
        XGetErrorText(display, event->error_code, lastError, sizeof lastError);
    return 0;
}

int onIOError(::Display* display) {
    if (!operation)
        return earlierIOHandler ? earlierIOHandler(display) : 0;
    lost = true;
    throwLost(operation);
}

} // namespace

void install() {
    if (installed)
        return;
    earlierHandler = XSetErrorHandler(onError);
    earlierIOHandler = XSetIOErrorHandler(onIOError);
    installed = true;
}

void remove() noexcept {
    if (!installed)
        return;
    XSetErrorHandler(earlierHandler);
    XSetIOErrorHandler(earlierIOHandler);
    installed = false;
}

bool takeLoss() noexcept {
    return std::exchange(lost, false);
}

bool arrived() noexcept {
    return lastError[0] != '\0';
}

void dismiss() noexcept {
    lastError[0] = '\0';
}

Operation::Operation(const char* name)
    : outer(operation) {
    if (lost)
        throwLost(name);
    if (!outer)
        dismiss(); // of an operation that ended in another exception
    operation = name;
}

Operation::~Operation() {
    operation = outer;
}

void Operation::check() const {
    if (!arrived())
        return;
    const std::string text = lastError;
    dismiss();
    throwRuntimeError(operation, "X error: " + text + ".");
}

} // namespace XErrors
} // namespace Ko
