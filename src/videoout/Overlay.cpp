// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/Overlay.h"

#include "Kovanta/Wrap.h"
#include "videoout/SdlFailure.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Ko {

namespace {

constexpr std::uint32_t largestPitch = 65535; // SDL cuts larger ones off without a word

} // namespace

Overlay::Overlay(const Size& size, SDL_Surface* screen, const char* function) {
    const char* const call = "SDL_CreateYUVOverlay";
    // Four bytes a pixel at most, counted in int by SDL.
    if (size.width > largestPitch || size.height > 0x7fffffffu / 4 / size.width)
        throwSdlFailure(function, call, "Frames too large");
    overlay.reset(
        SDL_CreateYUVOverlay(static_cast<int>(size.width), static_cast<int>(size.height), SDL_YV12_OVERLAY, screen));
    if (!overlay)
        throwSdlFailure(function, call, SDL_GetError());
    const Uint16* const pitches = overlay->pitches;
    if (pitches[0] < size.width || pitches[1] < size.width / 2 || pitches[2] < size.width / 2)
        throwSdlFailure(function, call, "Unusable layout");
}

void Overlay::Deleter::operator()(SDL_Overlay* freed) const noexcept {
    survives([freed] { SDL_FreeYUVOverlay(freed); });
}

Image<> Overlay::frame(unsigned int width, unsigned int height, const char* function) {
    if (!locked && SDL_LockYUVOverlay(overlay.get()) != 0)
        throwSdlFailure(function, "SDL_LockYUVOverlay", SDL_GetError());
    locked = true;
    if (blank) // a frame which does not cover everything must not have chance memory beside it
        blacken();
    const auto plane = [this](int p) {
        return PlaneMemory{overlay->pixels[p], overlay->pitches[p]};
    };
    // YV12 keeps Cr before Cb.
    return wrapMemory(PF_YCC420P, width, height, {plane(0), plane(2), plane(1)});
}

void Overlay::blacken() {
    const auto height = static_cast<std::size_t>(overlay->h);
    for (int p = 0; p < 3; ++p)
        std::memset(overlay->pixels[p], p == 0 ? 16 : 128, overlay->pitches[p] * (p == 0 ? height : height / 2));
    blank = false;
}

void Overlay::show(SDL_Rect& place) {
    if (locked)
        SDL_UnlockYUVOverlay(overlay.get());
    locked = false;
    SDL_DisplayYUVOverlay(overlay.get(), &place);
    shown = true;
}

void Overlay::showAgain(SDL_Rect& place) {
    if (shown)
        show(place);
}

} // namespace Ko
