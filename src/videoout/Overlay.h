// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_OVERLAY_H
#define KOVANTA_SRC_VIDEOOUT_OVERLAY_H

#include "Kovanta/Image.h"
#include "videoout/Size.h"

#include <SDL.h>

#include <memory>

namespace Ko {

/// The picture in a window, which SDL scales into its place there; or none.
class Overlay {
public:
    Overlay() = default;
    /// @param function the caller's name, for the message
    /// @throws std::runtime_error "[function]: SDL_CreateYUVOverlay failed: ..."
    Overlay(const Size& size, SDL_Surface* screen, const char* function);

    /// Locks the overlay, until show(), and wraps its memory as a frame of at most its size.
    /// @param function the caller's name, for the message
    /// @throws std::runtime_error "[function]: SDL_LockYUVOverlay failed: ..."
    Image<> frame(unsigned int width, unsigned int height, const char* function);
    void show(SDL_Rect& place);
    /// If anything was shown: a new or uncovered window is black, and the next frame may be far away.
    void showAgain(SDL_Rect& place);

private:
    struct Deleter {
        void operator()(SDL_Overlay* freed) const noexcept;
    };

    void blacken();

    std::unique_ptr<SDL_Overlay, Deleter> overlay;
    bool locked = false; // stays so when a conversion throws
    bool blank = true;   // its memory was never written
    bool shown = false;
};

} // namespace Ko

#endif
