// SPDX-License-Identifier: BSD-2-Clause
#include "Kovanta/VideoOutputDisplay.h"

#include "Kovanta/ConvertIm.h"
#include "util/Errors.h"
#include "videoout/Overlay.h"
#include "videoout/SdlConnections.h"
#include "videoout/SdlDriver.h"
#include "videoout/SdlFailure.h"
#include "videoout/ServerHold.h"
#include "videoout/Size.h"
#include "videoout/XErrors.h"

#include <SDL.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

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
constexpr char setModeCall[] = "SDL_SetVideoMode";
constexpr char setFrameSizeName[] = "VideoOutputDisplay::setFrameSize";
constexpr std::size_t mostKeys = 32;
constexpr std::uint32_t largestWindow = 32767; // coordinates of X and SDL have 16 bits

void requireFrameSize(const char* function, const Size& frames) {
    if (frames.width == 0 || frames.height == 0)
        throwLogicError(function, "Width and height must not be zero.");
    if (frames.width % 2 != 0 || frames.height % 2 != 0)
        throwLogicError(function, "Width and height of must both be even!");
}

void requireWindowSize(const char* function, const Size& size) {
    if (size.width > largestWindow || size.height > largestWindow)
        throwSdlFailure(function, setModeCall, "Window too large");
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

} // namespace

struct KOVANTA_LOCAL VideoOutputDisplay::Impl {
    Impl(std::uint32_t windowW, std::uint32_t w, std::uint32_t h, bool full, bool fit);
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl();

    void initVideo();
    void openScreen(const Size& size, std::uint32_t flags, const char* function);
    void openFullscreen(const char* function);
    void applyMode(const char* function);
    Size windowFor(const Size& frames) const;
    void setWindowWidth(std::uint32_t wished);
    void updateWindow(const char* function);
    void setFrameSize(const Size& frames);
    void placePicture(const Size& size, const Size& room);
    void placeOnFullscreen();
    void requireScreen(const char* function) const;
    void handle(const SDL_Event& event);

    const OnlyDisplay only;
    SdlConnections connections;
    SDL_Surface* screen = nullptr; // SDL's own
    void* pixels = nullptr;        // the screen's, which SDL forgets with a lost server
    Overlay overlay;
    SDL_Rect displayRect{};        // at 0, 0 unless borders are wished
    std::uint32_t wishedWidth = 1; // of the window, which may be fitted to the screen
    Size window{1, 1};
    Size frame;
    static inline Size desktop{0, 0}; // as SDL knew it when it started
    Size fullscreenMode{0, 0};
    bool fullscreen;
    bool fitScreen;
    bool keepAspect = false;
    bool quit = false;
    bool stepMode = false;
    bool paused = false;
    std::deque<std::string> keys;
};

VideoOutputDisplay::Impl::Impl(std::uint32_t windowW, std::uint32_t w, std::uint32_t h, bool full, bool fit)
    : frame{w, h}
    , fullscreen(full)
    , fitScreen(fit) {
    requireFrameSize(constructorName, frame);

    if (XErrors::takeLoss())
        SDL_Quit(); // of a display whose construction ended so
    const XErrors::Operation operation(constructorName);
    const ServerHold hold(SdlDriver::isX11());
    initVideo();
    connections.note();
    setWindowWidth(windowW);
    if (fullscreen)
        openScreen({1, 1}, windowFlags, constructorName);
    SDL_Delay(100);
    applyMode(constructorName);
    SDL_WM_SetCaption(DEFAULT_CAPTION, DEFAULT_CAPTION);
    overlay = Overlay(frame, screen, constructorName);
    SDL_EnableKeyRepeat(500, 30);
    operation.check();
}

VideoOutputDisplay::Impl::~Impl() {
    bool lost = XErrors::takeLoss();
    const XErrors::Operation operation("VideoOutputDisplay::~VideoOutputDisplay");
    lost = lost || !survives([&] { connections.require(); });
    overlay = {};
    // Losing the server on the way leaves SDL half closed; it knows by then and finishes without the server.
    if (!survives([] { SDL_Quit(); }))
        survives([] { SDL_Quit(); });
    if (lost)
        connections.release(pixels);
    survives([&] { operation.check(); });
    XErrors::remove();
}

void VideoOutputDisplay::Impl::initVideo() {
    // SDL's layer over SDL 2 keeps something of a start that failed, and the next one then finds no modes.
    if (SDL_WasInit(SDL_INIT_VIDEO) == 0)
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    XErrors::install();
    const bool running = SDL_WasInit(SDL_INIT_VIDEO) != 0; // since a construction that failed
    {
        const SdlDriver driver;
        if (SDL_Init(SDL_INIT_VIDEO) < 0) {
            XErrors::remove();
            throwRuntimeError(constructorName, std::string("Unable to init SDL: ") + SDL_GetError() + ".\n");
        }
    }
    // Before a first mode is set, this is the desktop's size; it holds where any mode will do.
    const SDL_VideoInfo* const info = SDL_GetVideoInfo();
    if (info && (!running || desktop.width == 0))
        desktop = {static_cast<std::uint32_t>(std::max(1, info->current_w)),
                   static_cast<std::uint32_t>(std::max(1, info->current_h))};
    fullscreenMode = desktop;
    SDL_Rect** const modes = SDL_ListModes(nullptr, SDL_FULLSCREEN | SDL_HWSURFACE);
    const auto anyMode = reinterpret_cast<SDL_Rect**>(-1); // NOLINT(performance-no-int-to-ptr)
    if (!modes || (modes != anyMode && !modes[0]))
        throwRuntimeError(constructorName, "No modes available.");
    if (modes != anyMode)
        fullscreenMode = {modes[0]->w, modes[0]->h};
}

void VideoOutputDisplay::Impl::openScreen(const Size& size, std::uint32_t flags, const char* function) {
    if (screen)
        SDL_PumpEvents(); // into SDL's queue: a change of mode drops what waits at the X server
    const bool full = (flags & static_cast<Uint32>(SDL_FULLSCREEN)) != 0;
    SDL_Event resize; // of the window that is left now: later it would end full screen
    while (full && SDL_PeepEvents(&resize, 1, SDL_GETEVENT, SDL_VIDEORESIZEMASK) > 0) {
    }
    screen = nullptr;
    requireWindowSize(function, size);
    screen = SDL_SetVideoMode(static_cast<int>(size.width), static_cast<int>(size.height), 0, flags);
    if (!screen)
        throwSdlFailure(function, setModeCall, SDL_GetError());
    pixels = screen->pixels;
}

void VideoOutputDisplay::Impl::openFullscreen(const char* function) {
    const Uint32 flags = windowFlags | static_cast<Uint32>(SDL_FULLSCREEN);
    const bool earlierError = XErrors::arrived();
    openScreen(fullscreenMode, flags, function);
    if (earlierError || !XErrors::arrived())
        return;
    // The server lists a mode that it does not switch to. The desktop's own takes no switch.
    XErrors::dismiss();
    fullscreenMode = desktop;
    openScreen(fullscreenMode, flags, function);
}

void VideoOutputDisplay::Impl::applyMode(const char* function) {
    if (fullscreen) {
        SDL_ShowCursor(SDL_DISABLE);
        openFullscreen(function);
        placeOnFullscreen();
    } else {
        SDL_ShowCursor(SDL_ENABLE);
        placePicture(window, window);
        openScreen(window, windowFlags, function);
    }
    overlay.showAgain(displayRect);
}

/// The window for frames of a size and the width that was last asked for.
Size VideoOutputDisplay::Impl::windowFor(const Size& frames) const {
    Size size{wishedWidth, std::max<std::uint32_t>(1, frames.height * wishedWidth / frames.width)};
    if (!fitScreen || desktop.width == 0)
        return size;
    // The desktop may span several monitors, or be smaller than its largest mode. A sixteenth is for the window's frame
    // and for panels.
    const auto room = [](std::uint32_t a, std::uint32_t b) {
        return std::min(a, b) - std::min(a, b) / 16;
    };
    const std::uint32_t widest =
        frames.fittedInto({room(desktop.width, fullscreenMode.width), room(desktop.height, fullscreenMode.height)})
            .width;
    if (wishedWidth > widest)
        size = {widest, std::max<std::uint32_t>(1, frames.height * widest / frames.width)};
    return size;
}

void VideoOutputDisplay::Impl::setWindowWidth(std::uint32_t wished) {
    wishedWidth = std::max<std::uint32_t>(1, wished);
    window = windowFor(frame);
}

/// Gives the window the size that it should have by now.
void VideoOutputDisplay::Impl::updateWindow(const char* function) {
    const Size size = windowFor(frame);
    if (size == window)
        return;
    window = size;
    if (!fullscreen)
        applyMode(function);
}

void VideoOutputDisplay::Impl::setFrameSize(const Size& frames) {
    requireFrameSize(setFrameSizeName, frames);
    if (frames == frame)
        return;
    requireScreen(setFrameSizeName);
    if (!fullscreen)
        requireWindowSize(setFrameSizeName, windowFor(frames));
    overlay = Overlay(frames, screen, setFrameSizeName);
    frame = frames;
    updateWindow(setFrameSizeName);
    if (fullscreen)
        placeOnFullscreen();
}

/// The picture's place: as much of the room as its size takes, in the middle.
void VideoOutputDisplay::Impl::placePicture(const Size& size, const Size& room) {
    displayRect.x = static_cast<Sint16>((room.width - size.width) / 2);
    displayRect.y = static_cast<Sint16>((room.height - size.height) / 2);
    displayRect.w = static_cast<Uint16>(size.width);
    displayRect.h = static_cast<Uint16>(size.height);
}

void VideoOutputDisplay::Impl::placeOnFullscreen() {
    placePicture(keepAspect ? frame.fittedInto(fullscreenMode) : fullscreenMode, fullscreenMode);
    if (!keepAspect)
        return;
    // What an earlier picture covered and this one does not.
    SDL_FillRect(screen, nullptr, 0);
    SDL_UpdateRect(screen, 0, 0, 0, 0);
}

void VideoOutputDisplay::Impl::requireScreen(const char* function) const {
    if (!screen)
        throwSdlFailure(function, setModeCall, "No window");
}

void VideoOutputDisplay::Impl::handle(const SDL_Event& event) {
    if (event.type == SDL_QUIT) {
        quit = true;
    } else if (event.type == SDL_VIDEORESIZE) {
        setWindowWidth(static_cast<std::uint32_t>(std::max(1, event.resize.w)));
        placePicture(window, window);
        openScreen(window, windowFlags, pollName);
        overlay.showAgain(displayRect);
    } else if (event.type == SDL_VIDEOEXPOSE) {
        overlay.showAgain(displayRect);
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
            if (keys.size() < mostKeys)
                keys.emplace_back(SDL_GetKeyName(event.key.keysym.sym));
        }
    }
}

VideoOutputDisplay::VideoOutputDisplay(unsigned int windowWidth, unsigned int, unsigned int width, unsigned int height,
                                       bool fullscreen)
    : impl(std::make_unique<Impl>(windowWidth, width, height, fullscreen, false)) {}

VideoOutputDisplay::VideoOutputDisplay(unsigned int width, unsigned int height, bool fullscreen)
    : impl(std::make_unique<Impl>(width, width, height, fullscreen, true)) {}

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

bool VideoOutputDisplay::getFullscreen() const {
    return impl->fullscreen;
}

void VideoOutputDisplay::setFrameSize(unsigned int width, unsigned int height) {
    const XErrors::Operation operation(setFrameSizeName);
    impl->setFrameSize({width, height});
    operation.check();
}

void VideoOutputDisplay::setFitScreen(bool on) {
    constexpr char name[] = "VideoOutputDisplay::setFitScreen";
    const XErrors::Operation operation(name);
    impl->fitScreen = on;
    impl->updateWindow(name);
    operation.check();
}

void VideoOutputDisplay::setKeepAspect(bool on) {
    const XErrors::Operation operation("VideoOutputDisplay::setKeepAspect");
    impl->keepAspect = on;
    if (impl->fullscreen && impl->screen) {
        impl->placeOnFullscreen();
        impl->overlay.showAgain(impl->displayRect);
    }
    operation.check();
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

bool VideoOutputDisplay::getStepMode() const {
    return impl->stepMode;
}

std::string VideoOutputDisplay::takeKey() {
    if (impl->keys.empty())
        return {};
    std::string key = std::move(impl->keys.front());
    impl->keys.pop_front();
    return key;
}

void VideoOutputDisplay::setPaused(bool on) {
    impl->paused = on;
}

bool VideoOutputDisplay::write(const Image<>& image) {
    const XErrors::Operation operation(writeName);
    const Size& frame = impl->frame;
    if (image.width > frame.width || image.height > frame.height ||
        (image.width != frame.width && image.height != frame.height))
        throwLogicError(writeName, "Frame does not fit the display.");
    impl->requireScreen(writeName);

    Image target = impl->overlay.frame(image.width, image.height, writeName);
    convertIm(target, image);
    impl->overlay.show(impl->displayRect);
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
