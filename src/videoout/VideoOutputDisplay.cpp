#include "Kovanta/VideoOutputDisplay.h"

#include "Kovanta/ConvertIm.h"
#include "videoout/DisplayText.h"
#include "videoout/SdlDriver.h"
#include "videoout/XErrors.h"

#include <SDL.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <stdexcept>

namespace {

char defaultCaption[] = "VideoOutputDisplay";

} // namespace

char* DEFAULT_CAPTION = defaultCaption;

namespace Ko {

namespace {

constexpr Uint32 windowFlags = SDL_HWSURFACE | SDL_RESIZABLE | SDL_DOUBLEBUF;
constexpr char constructor[] = "VideoOutputDisplay";
constexpr std::uint32_t largestWindow = 32767; // coordinates of X and SDL have 16 bits
constexpr std::uint32_t largestPitch = 65535;  // of an overlay; SDL cuts larger ones off without a word

[[noreturn]] void fail(const char* function, const std::string& call, const std::string& reason) {
    throw std::runtime_error(displayText(function, call + " failed: " + reason + "."));
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

} // namespace

VideoOutputDisplay::VideoOutputDisplay(unsigned int windowW, unsigned int, unsigned int w, unsigned int h, bool full)
    : width(w)
    , height(h)
    , fullscreen(full) {
    if (width == 0 || height == 0)
        throw std::logic_error(displayText(constructor, "Width and height must not be zero."));
    setWindowWidth(windowW);
    if (width % 2 != 0 || height % 2 != 0)
        throw std::logic_error(displayText(constructor, "Width and height of must both be even!"));

    if (XErrors::takeLoss())
        SDL_Quit(); // of a display whose construction ended so
    const XErrors::Operation operation(constructor);
    initVideo();
    displayRect = std::make_unique<SDL_Rect>(); // at 0, 0 for ever
    if (fullscreen)
        openScreen(1, 1, windowFlags, constructor);
    SDL_Delay(100);
    applyMode(constructor);
    SDL_WM_SetCaption(DEFAULT_CAPTION, DEFAULT_CAPTION);
    createOverlay();
    SDL_EnableKeyRepeat(500, 30);
    operation.check();
}

void VideoOutputDisplay::initVideo() {
    XErrors::install();
    {
        const SdlDriver driver;
        if (SDL_Init(SDL_INIT_VIDEO) < 0) {
            XErrors::remove();
            throw std::runtime_error(
                displayText(constructor, std::string("Unable to init SDL: ") + SDL_GetError() + ".\n"));
        }
    }
    char driver[127];
    SDL_VideoDriverName(driver, sizeof driver); // for whoever looks on with a debugger
    // Before a first mode is set, this is the desktop's size; it holds where any mode will do.
    if (const SDL_VideoInfo* const desktop = SDL_GetVideoInfo()) {
        fullscreenWidth = static_cast<std::uint32_t>(std::max(1, desktop->current_w));
        fullscreenHeight = static_cast<std::uint32_t>(std::max(1, desktop->current_h));
    }
    SDL_Rect** const modes = SDL_ListModes(nullptr, SDL_FULLSCREEN | SDL_HWSURFACE);
    const auto anyMode = reinterpret_cast<SDL_Rect**>(-1); // NOLINT(performance-no-int-to-ptr)
    if (!modes || (modes != anyMode && !modes[0]))
        throw std::runtime_error(displayText(constructor, "No modes available."));
    if (modes != anyMode) {
        fullscreenWidth = modes[0]->w;
        fullscreenHeight = modes[0]->h;
    }
}

void VideoOutputDisplay::createOverlay() {
    const char* const call = "SDL_CreateYUVOverlay";
    // Four bytes a pixel at most, counted in int by SDL.
    if (width > largestPitch || height > 0x7fffffffu / 4 / width)
        fail(constructor, call, "Frames too large");
    overlay.reset(SDL_CreateYUVOverlay(static_cast<int>(width), static_cast<int>(height), SDL_YV12_OVERLAY, screen));
    if (!overlay)
        fail(constructor, call, SDL_GetError());
    if (overlay->pitches[0] < width || overlay->pitches[1] < width / 2 || overlay->pitches[2] < width / 2)
        fail(constructor, call, "Unusable layout");
}

void VideoOutputDisplay::blacken() {
    for (int p = 0; p < 3; ++p)
        std::memset(overlay->pixels[p], p == 0 ? 16 : 128,
                    std::size_t{overlay->pitches[p]} * (p == 0 ? height : height / 2));
    blank = false;
}

VideoOutputDisplay::~VideoOutputDisplay() {
    XErrors::takeLoss();
    const XErrors::Operation operation("~VideoOutputDisplay");
    displayRect.reset();
    overlay.reset();
    // Losing the server on the way leaves SDL half closed; it knows by then and finishes without the server.
    if (!survives([] { SDL_Quit(); }))
        survives([] { SDL_Quit(); });
    survives([&] { operation.check(); });
    XErrors::remove();
}

void VideoOutputDisplay::OverlayDeleter::operator()(SDL_Overlay* freed) const noexcept {
    survives([freed] { SDL_FreeYUVOverlay(freed); });
}

void VideoOutputDisplay::setWindowWidth(std::uint32_t w) {
    windowWidth = std::max<std::uint32_t>(1, w);
    windowHeight = std::max<std::uint32_t>(1, height * windowWidth / width);
}

void VideoOutputDisplay::setDisplayRect(std::uint32_t w, std::uint32_t h) {
    displayRect->w = static_cast<Uint16>(w);
    displayRect->h = static_cast<Uint16>(h);
}

void VideoOutputDisplay::openScreen(std::uint32_t w, std::uint32_t h, std::uint32_t flags, const char* function) {
    const char* const call = "SDL_SetVideoMode";
    screen = nullptr;
    if (w > largestWindow || h > largestWindow)
        fail(function, call, "Window too large");
    screen = SDL_SetVideoMode(static_cast<int>(w), static_cast<int>(h), 0, flags);
    if (!screen)
        fail(function, call, SDL_GetError());
}

void VideoOutputDisplay::applyMode(const char* function) {
    if (fullscreen) {
        SDL_ShowCursor(SDL_DISABLE);
        openScreen(fullscreenWidth, fullscreenHeight, windowFlags | static_cast<Uint32>(SDL_FULLSCREEN), function);
        setDisplayRect(fullscreenWidth, fullscreenHeight);
    } else {
        SDL_ShowCursor(SDL_ENABLE);
        setDisplayRect(windowWidth, windowHeight);
        openScreen(windowWidth, windowHeight, windowFlags, function);
    }
}

void VideoOutputDisplay::setMode() {
    const XErrors::Operation operation("setMode");
    applyMode("setMode");
    operation.check();
}

void VideoOutputDisplay::toggleFullscreen(bool on) {
    fullscreen = on;
    setMode();
}

void VideoOutputDisplay::setCaption(const std::string& caption) {
    const XErrors::Operation operation("setCaption");
    SDL_WM_SetCaption(caption.c_str(), caption.c_str());
    operation.check();
}

bool VideoOutputDisplay::getQuit() const {
    return quit;
}

bool VideoOutputDisplay::getPaused() const {
    return paused;
}

void VideoOutputDisplay::setPaused(bool on) {
    paused = on;
}

void VideoOutputDisplay::lockOverlay() {
    if (locked)
        return;
    if (SDL_LockYUVOverlay(overlay.get()) != 0)
        fail("write", "SDL_LockYUVOverlay", SDL_GetError());
    locked = true;
}

void VideoOutputDisplay::unlockOverlay() {
    SDL_UnlockYUVOverlay(overlay.get());
    locked = false;
}

bool VideoOutputDisplay::write(const Image<unsigned char>& image) {
    const XErrors::Operation operation("write");
    if (image.width > width || image.height > height || (image.width != width && image.height != height))
        throw std::logic_error(displayText("write", "Frame does not fit the display."));
    if (!screen)
        fail("write", "SDL_SetVideoMode", "No window");

    // YV12 keeps Cr before Cb.
    constexpr int overlayPlane[3] = {0, 2, 1};
    Image<unsigned char> target(PF_YCC420P);
    target.size(image.width, image.height, false);
    lockOverlay();
    if (blank) // a frame which does not cover everything must not have chance memory beside it
        blacken();
    for (int p = 0; p < 3; ++p) {
        Array2D<unsigned char>& plane = target.plane[p];
        const int source = overlayPlane[p];
        for (std::size_t r = 0; plane.rows && r < plane.height; ++r)
            plane.rows[r] = overlay->pixels[source] + r * overlay->pitches[source];
    }
    convertIm(target, image);
    unlockOverlay();
    SDL_DisplayYUVOverlay(overlay.get(), displayRect.get());
    if (stepMode)
        paused = true;
    operation.check();
    videoPollEvents();
    return true;
}

void VideoOutputDisplay::videoPollEvents() {
    const XErrors::Operation operation("videoPollEvents");
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        if (event.type == SDL_QUIT) {
            quit = true;
        } else if (event.type == SDL_VIDEORESIZE) {
            setWindowWidth(static_cast<std::uint32_t>(std::max(1, event.resize.w)));
            setDisplayRect(windowWidth, windowHeight);
            openScreen(windowWidth, windowHeight, windowFlags, "videoPollEvents");
        } else if (event.type == SDL_KEYDOWN) {
            switch (event.key.keysym.sym) {
            case SDLK_f:
                fullscreen = !fullscreen;
                applyMode("videoPollEvents");
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
    operation.check();
}

} // namespace Ko
