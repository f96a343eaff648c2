// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_VIDEOOUT_SDLCONNECTIONS_H
#define KOVANTA_SRC_VIDEOOUT_SDLCONNECTIONS_H

typedef struct _XDisplay Display; // NOLINT(modernize-use-using): Xlib's own

namespace Ko {

/// SDL's two connections to the X server, which it forgets when either is lost: their descriptors and memory would
/// stay. Calls may throw what XErrors throws.
class SdlConnections {
public:
    /// Call when SDL's video has started. Other drivers than X11, and layers that stand for SDL 1.2, clean up
    /// themselves.
    void note();
    /// Throws what XErrors throws if the server is gone.
    void require() const;
    /// Call when SDL has ended after a connection was lost.
    /// @param pixels the window's, which SDL forgets as well
    void release(void* pixels) noexcept;

private:
    ::Display* displays[2] = {nullptr, nullptr};
};

} // namespace Ko

#endif
