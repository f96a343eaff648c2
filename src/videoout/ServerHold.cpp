// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/ServerHold.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace Ko {

namespace {

constexpr std::chrono::milliseconds patience{250};
constexpr std::chrono::milliseconds betweenTries{5};

/// A server that has answered has done with starting anew.
bool answers(xcb_connection_t* connection) {
    void* const reply = xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr);
    std::free(reply);
    return reply != nullptr;
}

} // namespace

ServerHold::ServerHold(bool wanted) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (wanted) {
        // Unlike Xlib's, these connections can be lost without harm.
        connection = xcb_connect(nullptr, nullptr);
        if (answers(connection))
            return;
        const int error = xcb_connection_has_error(connection);
        xcb_disconnect(connection);
        connection = nullptr;
        if (error != XCB_CONN_ERROR || std::chrono::steady_clock::now() > end)
            return;
        std::this_thread::sleep_for(betweenTries);
    }
}

ServerHold::~ServerHold() {
    if (connection)
        xcb_disconnect(connection);
}

} // namespace Ko
