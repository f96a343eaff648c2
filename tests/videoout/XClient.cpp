// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/XClient.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <SDL_syswm.h>

#include <stdexcept>

namespace user {

namespace {

/// Outlives every window: a server that loses its last client starts anew.
Display* const display = XOpenDisplay(nullptr);
Window window = None;

} // namespace

void takeWindow() {
    if (!display)
        throw std::runtime_error("no X server");
    Window ignored = None;
    Window* children = nullptr;
    unsigned int count = 0;
    int mapped = 0;
    XQueryTree(display, DefaultRootWindow(display), &ignored, &ignored, &children, &count);
    for (unsigned int i = 0; i < count; ++i) {
        XWindowAttributes attributes;
        if (!XGetWindowAttributes(display, children[i], &attributes) || attributes.map_state != IsViewable)
            continue;
        window = children[i];
        ++mapped;
    }
    XFree(children);
    if (mapped != 1)
        throw std::runtime_error(std::to_string(mapped) + " windows");
    XSetInputFocus(display, window, RevertToPointerRoot, CurrentTime);
    XSync(display, False);
}

Geometry geometry() {
    XWindowAttributes a;
    XGetWindowAttributes(display, window, &a);
    return {a.x, a.y, static_cast<unsigned int>(a.width), static_cast<unsigned int>(a.height)};
}

std::string titles() {
    std::string result;
    for (const Atom atom : {XA_WM_NAME, XA_WM_ICON_NAME}) {
        XTextProperty text{};
        if (XGetTextProperty(display, window, &text, atom) && text.value)
            result += std::string(reinterpret_cast<char*>(text.value), text.nitems) + "\n";
        XFree(text.value);
    }
    return result;
}

std::vector<Rgb> screen(Geometry area) {
    XImage* const image =
        XGetImage(display, DefaultRootWindow(display), area.x, area.y, area.width, area.height, AllPlanes, ZPixmap);
    if (!image)
        throw std::runtime_error("no screenshot");
    std::vector<Rgb> pixels;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x) {
            const int p = static_cast<int>(XGetPixel(image, x, y));
            pixels.push_back({{p >> 16 & 255, p >> 8 & 255, p & 255}});
        }
    XDestroyImage(image);
    return pixels;
}

void key(const char* name) {
    const KeyCode code = XKeysymToKeycode(display, XStringToKeysym(name));
    if (code == 0)
        throw std::runtime_error(std::string("no key ") + name);
    for (const Bool down : {True, False})
        XTestFakeKeyEvent(display, code, down, CurrentTime);
    XSync(display, False);
}

void resize(unsigned int width, unsigned int height) {
    XMoveResizeWindow(display, window, 0, 0, width, height); // where there is room for it
    XSync(display, False);
}

void close() {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    XSendEvent(display, window, False, NoEventMask, &event);
    XSync(display, False);
}

void destroyWindow() {
    XDestroyWindow(display, window);
    XSync(display, False);
}

void kill() {
    XKillClient(display, window);
    XSync(display, False);
}

void makeAnError() {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    SDL_GetWMInfo(&info);
    XMapWindow(info.info.x11.display, None);
    XSync(info.info.x11.display, False);
}

} // namespace user
