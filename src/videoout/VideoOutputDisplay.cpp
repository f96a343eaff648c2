// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoOutputDisplay.h"

#include "Kovanta/ConvertIm.h"
#include "Kovanta/Wrap.h"
#include "util/Errors.h"
#include "videoout/SdlDriver.h"
#include "videoout/XErrors.h"

#include <SDL.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iostream>

namespace {

char defaultCaption[] = "VideoOutputDisplay";

} // namespace

char* DEFAULT_CAPTION = defaultCaption;

namespace Ko {

namespace {

constexpr Uint32 windowFlags = SDL_HWSURFACE | SDL_RESIZABLE | SDL_DOUBLEBUF;
constexpr char constructorName[] = "VideoOutputDisplay::VideoOutputDisplay";
constexpr char writeName[] = "VideoOutputDisplay::write";
constexpr char setModeName[] = "VideoOutputDisplay::setMode";
constexpr char pollName[] = "VideoOutputDisplay::videoPollEvents";
constexpr std::uint32_t largestWindow = 32767; // coordinates of X and SDL have 16 bits
constexpr std::uint32_t largestPitch = 65535;  // of an overlay; SDL cuts larger ones off without a word

[[noreturn]] void throwFailed(const char* function, const char* call, const std::string& reason) {
    throwRuntimeError(function, std::string(call) + " failed: " + reason + ".");
}

/// Runs one step of tearing down; what the X server's end makes of it is printed.
template <class Step>
bool survives(Step step) noexcept {
    try {
        step();
        return true;
    } catch (const std::exception& e) {
        std::cerr << e.what() << std::endl;
        return false;
    }
}

/// SDL has one window, and the end of a display ends SDL.
class OnlyDisplay {
public:
    OnlyDisplay() {
        if (exists.exchange(true))
            throwLogicError(constructorName, "Only one display may exist at a time.");
    }
    OnlyDisplay(const OnlyDisplay&) = delete;
    OnlyDisplay& operator=(const OnlyDisplay&) = delete;
    ~OnlyDisplay() { exists = false; }

private:
    static inline std::atomic<bool> exists{false};
};

struct OverlayDeleter {
    void operator()(SDL_Overlay* freed) const noexcept {
        survives([freed] { SDL_FreeYUVOverlay(freed); });
    }
};

} // namespace

struct KOVANTA_LOCAL VideoOutputDisplay::Impl {
    Impl(std::uint32_t windowW, std::uint32_t w, std::uint32_t h, bool full);
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl();

    void initVideo();
    void createOverlay();
    void openScreen(std::uint32_t w, std::uint32_t h, std::uint32_t flags, const char* function);
    void openFullscreen(const char* function);
    void applyMode(const char* function);
    void setWindowWidth(std::uint32_t w);
    void setDisplayRect(std::uint32_t w, std::uint32_t h);
    void blacken();
    void lockOverlay();
    void show();
    void showAgain();
    void handle(const SDL_Event& event);

    const OnlyDisplay only;
    SDL_Surface* screen = nullptr; // SDL's own
    std::unique_ptr<SDL_Overlay, OverlayDeleter> overlay;
    SDL_Rect displayRect{}; // at 0, 0 for ever
    std::uint32_t windowWidth = 1;
    std::uint32_t windowHeight = 1;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t desktopWidth = 0;
    std::uint32_t desktopHeight = 0;
    std::uint32_t fullscreenWidth = 0;
    std::uint32_t fullscreenHeight = 0;
    bool fullscreen;
    bool quit = false;
    bool stepMode = false;
    bool paused = false;
    bool locked = false; // the overlay stays locked when a conversion throws
    bool blank = true;   // the overlay's memory was never written
    bool shown = false;  // a frame was shown
};

VideoOutputDisplay::Impl::Impl(std::uint32_t windowW, std::uint32_t w, std::uint32_t h, bool full)
    : width(w)
    , height(h)
    , fullscreen(full) {
    if (width == 0 || height == 0)
        throwLogicError(constructorName, "Width and height must not be zero.");
    setWindowWidth(windowW);
    if (width % 2 != 0 || height % 2 != 0)
        throwLogicError(constructorName, "Width and height of must both be even!");

    if (XErrors::takeLoss())
        SDL_Quit(); // of a display whose construction ended so
    const XErrors::Operation operation(constructorName);
    initVideo();
    if (fullscreen)
        openScreen(1, 1, windowFlags, constructorName);
    SDL_Delay(100);
    applyMode(constructorName);
    SDL_WM_SetCaption(DEFAULT_CAPTION, DEFAULT_CAPTION);
    createOverlay();
    SDL_EnableKeyRepeat(500, 30);
    operation.check();
}

VideoOutputDisplay::Impl::~Impl() {
    XErrors::takeLoss();
    const XErrors::Operation operation("VideoOutputDisplay::~VideoOutputDisplay");
    overlay.reset();
    // Losing the server on the way leaves SDL half closed; it knows by then and finishes without the server.
    if (!survives([] { SDL_Quit(); }))
        survives([] { SDL_Quit(); });
    survives([&] { operation.check(); });
    XErrors::remove();
}

void VideoOutputDisplay::Impl::initVideo() {
    XErrors::install();
    {
        const SdlDriver driver;
        if (SDL_Init(SDL_INIT_VIDEO) < 0) {
            XErrors::remove();
            throwRuntimeError(constructorName, std::string("Unable to init SDL: ") + SDL_GetError() + ".\n");
        }
    }
    // Before a first mode is set, this is the desktop's size; it holds where any mode will do.
    if (const SDL_VideoInfo* const desktop = SDL_GetVideoInfo()) {
        fullscreenWidth = desktopWidth = static_cast<std::uint32_t>(std::max(1, desktop->current_w));
        fullscreenHeight = desktopHeight = static_cast<std::uint32_t>(std::max(1, desktop->current_h));
    }
    SDL_Rect** const modes = SDL_ListModes(nullptr, SDL_FULLSCREEN | SDL_HWSURFACE);
    const auto anyMode = reinterpret_cast<SDL_Rect**>(-1); // NOLINT(performance-no-int-to-ptr)
    if (!modes || (modes != anyMode && !modes[0]))
        throwRuntimeError(constructorName, "No modes available.");
    if (modes != anyMode) {
        fullscreenWidth = modes[0]->w;
        fullscreenHeight = modes[0]->h;
    }
}

void VideoOutputDisplay::Impl::createOverlay() {
    const char* const call = "SDL_CreateYUVOverlay";
    // Four bytes a pixel at most, counted in int by SDL.
    if (width > largestPitch || height > 0x7fffffffu / 4 / width)
        throwFailed(constructorName, call, "Frames too large");
    overlay.reset(SDL_CreateYUVOverlay(static_cast<int>(width), static_cast<int>(height), SDL_YV12_OVERLAY, screen));
    if (!overlay)
        throwFailed(constructorName, call, SDL_GetError());
    if (overlay->pitches[0] < width || overlay->pitches[1] < width / 2 || overlay->pitches[2] < width / 2)
        throwFailed(constructorName, call, "Unusable layout");
}

void VideoOutputDisplay::Impl::openScreen(std::uint32_t w, std::uint32_t h, std::uint32_t flags, const char* function) {
    const char* const call = "SDL_SetVideoMode";
    screen = nullptr;
    if (w > largestWindow || h > largestWindow)
        throwFailed(function, call, "Window too large");
    screen = SDL_SetVideoMode(static_cast<int>(w), static_cast<int>(h), 0, flags);
    if (!screen)
        throwFailed(function, call, SDL_GetError());
}

void VideoOutputDisplay::Impl::openFullscreen(const char* function) {
    const Uint32 flags = windowFlags | static_cast<Uint32>(SDL_FULLSCREEN);
    const bool earlierError = XErrors::arrived();
    openScreen(fullscreenWidth, fullscreenHeight, flags, function);
    if (earlierError || !XErrors::arrived())
        return;
    // The server lists a mode that it does not switch to. The desktop's own takes no switch.
    XErrors::dismiss();
    fullscreenWidth = desktopWidth;
    fullscreenHeight = desktopHeight;
    openScreen(fullscreenWidth, fullscreenHeight, flags, function);
}

void VideoOutputDisplay::Impl::applyMode(const char* function) {
    if (fullscreen) {
        SDL_ShowCursor(SDL_DISABLE);
        openFullscreen(function);
        setDisplayRect(fullscreenWidth, fullscreenHeight);
    } else {
        SDL_ShowCursor(SDL_ENABLE);
        setDisplayRect(windowWidth, windowHeight);
        openScreen(windowWidth, windowHeight, windowFlags, function);
    }
    showAgain();
}

void VideoOutputDisplay::Impl::setWindowWidth(std::uint32_t w) {
    windowWidth = std::max<std::uint32_t>(1, w);
    windowHeight = std::max<std::uint32_t>(1, height * windowWidth / width);
}

void VideoOutputDisplay::Impl::setDisplayRect(std::uint32_t w, std::uint32_t h) {
    displayRect.w = static_cast<Uint16>(w);
    displayRect.h = static_cast<Uint16>(h);
}

void VideoOutputDisplay::Impl::blacken() {
    for (int p = 0; p < 3; ++p)
        std::memset(overlay->pixels[p], p == 0 ? 16 : 128,
                    std::size_t{overlay->pitches[p]} * (p == 0 ? height : height / 2));
    blank = false;
}

void VideoOutputDisplay::Impl::lockOverlay() {
    if (locked)
        return;
    if (SDL_LockYUVOverlay(overlay.get()) != 0)
        throwFailed(writeName, "SDL_LockYUVOverlay", SDL_GetError());
    locked = true;
}

void VideoOutputDisplay::Impl::show() {
    if (locked)
        SDL_UnlockYUVOverlay(overlay.get());
    locked = false;
    SDL_DisplayYUVOverlay(overlay.get(), &displayRect);
    shown = true;
}

/// A new or uncovered window is black, and the next frame may be far away.
void VideoOutputDisplay::Impl::showAgain() {
    if (shown)
        show();
}

void VideoOutputDisplay::Impl::handle(const SDL_Event& event) {
    if (event.type == SDL_QUIT) {
        quit = true;
    } else if (event.type == SDL_VIDEORESIZE) {
        setWindowWidth(static_cast<std::uint32_t>(std::max(1, event.resize.w)));
        setDisplayRect(windowWidth, windowHeight);
        openScreen(windowWidth, windowHeight, windowFlags, pollName);
        showAgain();
    } else if (event.type == SDL_VIDEOEXPOSE) {
        showAgain();
    } else if (event.type == SDL_KEYDOWN) {
        switch (event.key.keysym.sym) {
        case SDLK_f:
            fullscreen = !fullscreen;
            applyMode(pollName);
            break;
        case SDLK_p:
        case SDLK_PAUSE:
            paused = !paused;
            stepMode = !stepMode;
            break;
        case SDLK_SPACE:
            if (stepMode)
                paused = false;
            break;
        case SDLK_q:
            quit = true;
            break;
        default:
            break;
        }
    }
}

VideoOutputDisplay::VideoOutputDisplay(unsigned int windowWidth, unsigned int, unsigned int width, unsigned int height,
                                       bool fullscreen)
    : impl(std::make_unique<Impl>(windowWidth, width, height, fullscreen)) {}

VideoOutputDisplay::~VideoOutputDisplay() = default;

void VideoOutputDisplay::setMode() {
    const XErrors::Operation operation(setModeName);
    impl->applyMode(setModeName);
    operation.check();
}

void VideoOutputDisplay::toggleFullscreen(bool on) {
    impl->fullscreen = on;
    setMode();
}

void VideoOutputDisplay::setCaption(const std::string& caption) {
    const XErrors::Operation operation("VideoOutputDisplay::setCaption");
    SDL_WM_SetCaption(caption.c_str(), caption.c_str());
    operation.check();
}

bool VideoOutputDisplay::getQuit() const {
    return impl->quit;
}

bool VideoOutputDisplay::getPaused() const {
    return impl->paused;
}

void VideoOutputDisplay::setPaused(bool on) {
    impl->paused = on;
}

bool VideoOutputDisplay::write(const Image<>& image) {
    const XErrors::Operation operation(writeName);
    if (image.width > impl->width || image.height > impl->height ||
        (image.width != impl->width && image.height != impl->height))
        throwLogicError(writeName, "Frame does not fit the display.");
    if (!impl->screen)
        throwFailed(writeName, "SDL_SetVideoMode", "No window");

    impl->lockOverlay();
    if (impl->blank) // a frame which does not cover everything must not have chance memory beside it
        impl->blacken();
    const auto plane = [&overlay = *impl->overlay](int p) {
        return PlaneMemory{overlay.pixels[p], overlay.pitches[p]};
    };
    // YV12 keeps Cr before Cb.
    Image target = wrapMemory(PF_YCC420P, image.width, image.height, {plane(0), plane(2), plane(1)});
    convertIm(target, image);
    impl->show();
    if (impl->stepMode)
        impl->paused = true;
    operation.check();
    videoPollEvents();
    return true;
}

void VideoOutputDisplay::videoPollEvents() {
    const XErrors::Operation operation(pollName);
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0)
        impl->handle(event);
    operation.check();
}

} // namespace Ko
