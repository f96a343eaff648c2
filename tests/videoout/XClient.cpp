#include "videoout/XClient.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <stdexcept>

struct XClient::Impl {
    Display* display = XOpenDisplay(nullptr);
    Window window = None;

    Impl() {
        if (!display)
            throw std::runtime_error("no X server");
    }
    ~Impl() { XCloseDisplay(display); }
    Window root() const { return DefaultRootWindow(display); }
    std::string property(Atom atom) const {
        XTextProperty text{};
        if (!XGetTextProperty(display, window, &text, atom) || !text.value)
            return "";
        std::string result(reinterpret_cast<char*>(text.value), text.nitems);
        XFree(text.value);
        return result;
    }
};

XClient::XClient()
    : impl(new Impl) {}
XClient::~XClient() = default;

void XClient::takeWindow() {
    Window root = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned int count = 0;
    XQueryTree(impl->display, impl->root(), &root, &parent, &children, &count);
    std::vector<Window> mapped;
    for (unsigned int i = 0; i < count; ++i) {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(impl->display, children[i], &attributes) && attributes.map_state == IsViewable)
            mapped.push_back(children[i]);
    }
    XFree(children);
    if (mapped.size() != 1)
        throw std::runtime_error(std::to_string(mapped.size()) + " windows");
    impl->window = mapped[0];
    XSetInputFocus(impl->display, impl->window, RevertToPointerRoot, CurrentTime);
    XSync(impl->display, False);
}

XClient::Geometry XClient::geometry() const {
    XWindowAttributes attributes;
    XGetWindowAttributes(impl->display, impl->window, &attributes);
    return {attributes.x, attributes.y, static_cast<unsigned int>(attributes.width),
            static_cast<unsigned int>(attributes.height)};
}

std::string XClient::title() const {
    return impl->property(XA_WM_NAME);
}

std::string XClient::iconTitle() const {
    return impl->property(XA_WM_ICON_NAME);
}

std::vector<XClient::Rgb> XClient::screen(Geometry area) const {
    XImage* image = XGetImage(impl->display, impl->root(), area.x, area.y, area.width, area.height, AllPlanes, ZPixmap);
    if (!image)
        throw std::runtime_error("no screenshot");
    std::vector<Rgb> pixels;
    for (unsigned int y = 0; y < area.height; ++y)
        for (unsigned int x = 0; x < area.width; ++x) {
            const unsigned long p = XGetPixel(image, static_cast<int>(x), static_cast<int>(y));
            pixels.push_back(
                {static_cast<int>(p >> 16 & 255), static_cast<int>(p >> 8 & 255), static_cast<int>(p & 255)});
        }
    XDestroyImage(image);
    return pixels;
}

void XClient::key(const char* name) {
    const KeyCode code = XKeysymToKeycode(impl->display, XStringToKeysym(name));
    if (code == 0)
        throw std::runtime_error(std::string("no key ") + name);
    XTestFakeKeyEvent(impl->display, code, True, CurrentTime);
    XTestFakeKeyEvent(impl->display, code, False, CurrentTime);
    XSync(impl->display, False);
}

void XClient::resize(unsigned int width, unsigned int height) {
    XResizeWindow(impl->display, impl->window, width, height);
    XSync(impl->display, False);
}

void XClient::close() {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = impl->window;
    event.xclient.message_type = XInternAtom(impl->display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(impl->display, "WM_DELETE_WINDOW", False));
    XSendEvent(impl->display, impl->window, False, NoEventMask, &event);
    XSync(impl->display, False);
}

void XClient::destroyWindow() {
    XDestroyWindow(impl->display, impl->window);
    XSync(impl->display, False);
}

void XClient::kill() {
    XKillClient(impl->display, impl->window);
    XSync(impl->display, False);
}
