// SPDX-License-Identifier: BSD-2-Clause
#include "videoout/SdlConnections.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <X11/Xlib.h>
#include <sys/shm.h>
#include <unistd.h>

#include <utility>

namespace Ko {

namespace {

/// Whether it is SDL 1.2 itself: what stands for it on newer systems says so by its patch level.
bool isOriginal() {
    return SDL_Linked_Version()->patch < 50;
}

} // namespace

void SdlConnections::note() {
    SDL_SysWMinfo info{};
    SDL_VERSION(&info.version);
    if (!isOriginal() || SDL_GetWMInfo(&info) != 1 || info.subsystem != SDL_SYSWM_X11)
        return;
    displays[0] = info.info.x11.display;
    displays[1] = info.info.x11.gfxdisplay;
}

void SdlConnections::require() const {
    for (::Display* const display : displays)
        if (display)
            XSync(display, False);
}

void SdlConnections::release(void* pixels) noexcept {
    if (!displays[0])
        return;
    for (::Display*& display : displays)
        ::close(ConnectionNumber(std::exchange(display, nullptr)));
    shmdt(pixels); // fails harmlessly where the memory was not shared
}

} // namespace Ko
