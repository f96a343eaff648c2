// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOOUTPUTDISPLAY_H
#define KOVANTA_VIDEOOUTPUTDISPLAY_H

#include "Kovanta/Export.h"
#include "Kovanta/VideoOutputBase.h"

#include <memory>
#include <string>

/// @addtogroup videoout
/// @{

/// The title that a new window gets, "VideoOutputDisplay". May be pointed at another text before a window is opened.
extern KOVANTA_API char* DEFAULT_CAPTION;

/// @}

namespace Ko {

/// @addtogroup videoout
/// @{

/// A window that shows frames and turns key presses into flags that the application polls.
///
/// | key or event     | effect                                                                     |
/// |------------------|----------------------------------------------------------------------------|
/// | `q`, window close | getQuit() is true from now on                                             |
/// | `f`              | full screen on or off                                                      |
/// | `p`, Pause       | pause on or off                                                            |
/// | space            | while pausing: lets one frame through                                      |
/// | resize           | the new width holds; the height follows from the frames' aspect ratio      |
///
/// Write a frame; stop if getQuit(); while getPaused() keep calling videoPollEvents(). Nothing here blocks. While a
/// window is open, SIGINT and SIGTERM count as closing it, unless the application handles them itself.
///
/// The window needs an X server. Set the variable SDL_VIDEODRIVER to choose another of SDL's drivers; one with less
/// than 16 bits a pixel cannot show frames. When it is not set, the constructor sets it while SDL starts, so no other
/// thread may use the environment meanwhile.
///
/// A window that is resized, exposed or taken to full screen shows the last frame again.
///
/// Bound to one thread, the one that owns SDL's video (the main thread, in practice). One window at a time: the
/// destructor ends SDL for the process, and a second constructor throws. A broken connection to the X server, or a
/// window that another program destroyed, ends in a std::runtime_error from the operation that notices and from those
/// after it: "[VideoOutputDisplay::...]: Lost the connection to the X server." or "...: X error: ....": destroy the
/// display then. Xlib keeps some 0.7 MB of each connection that was lost.
class KOVANTA_API VideoOutputDisplay : public VideoOutput {
public:
    /// Opens the window. Takes a tenth of a second.
    /// @param windowWidth in pixels, at least 1
    /// @param windowHeight ignored: the height follows from @p windowWidth and the frames' aspect ratio
    /// @param width, height size of the frames in pixels, even
    /// @param fullscreen start in full screen, where the picture is stretched over the largest mode (over the
    ///        desktop's own where the server does not switch to that)
    /// @throws std::logic_error "[VideoOutputDisplay::VideoOutputDisplay]: Width and height of must both be even!",
    ///         "[VideoOutputDisplay::VideoOutputDisplay]: Width and height must not be zero.",
    ///         "[VideoOutputDisplay::VideoOutputDisplay]: Only one display may exist at a time."
    /// @throws std::runtime_error "[VideoOutputDisplay::VideoOutputDisplay]: " followed by "Unable to init SDL: ...",
    ///         when there is no X server, by "No modes available.", by "SDL_SetVideoMode failed: ..." or by
    ///         "SDL_CreateYUVOverlay failed: ..."; after all but the first SDL stays initialised
    VideoOutputDisplay(unsigned int windowWidth, unsigned int windowHeight, unsigned int width, unsigned int height,
                       bool fullscreen);
    /// Opens a window as wide as the frames, or as the screen has room for: setFitScreen() is on. Otherwise as above.
    VideoOutputDisplay(unsigned int width, unsigned int height, bool fullscreen);
    VideoOutputDisplay(const VideoOutputDisplay&) = delete;
    VideoOutputDisplay& operator=(const VideoOutputDisplay&) = delete;
    /// Closes the window and ends SDL.
    ~VideoOutputDisplay() override;

    /// Shows one frame and handles the events that wait. While pausing, sets getPaused() again.
    /// @param image of the display's frame size, in PF_YCC420P or a format that convertIm() turns into it (PF_YCC444P,
    ///        PF_Y). One that is smaller in one direction covers its part of the picture.
    /// @return true
    /// @throws std::logic_error "[VideoOutputDisplay::write]: Frame does not fit the display.", and that of convertIm()
    ///         for other formats; the next frame can be shown all the same
    /// @throws std::runtime_error, std::bad_alloc
    bool write(const Image<>& image) override;

    /// Changes the size of the frames. Full screen, pausing, keys that wait and the window's width stay; its height
    /// follows from the new aspect ratio. The next frame written is the first one shown again.
    /// @param width, height in pixels, even
    /// @throws std::logic_error "[VideoOutputDisplay::setFrameSize]: Width and height of must both be even!",
    ///         "[VideoOutputDisplay::setFrameSize]: Width and height must not be zero."
    /// @throws std::runtime_error "[VideoOutputDisplay::setFrameSize]: " followed by "SDL_CreateYUVOverlay failed: ..."
    ///         or "SDL_SetVideoMode failed: Window too large.", which change nothing, or by another reason why
    ///         SDL_SetVideoMode failed
    void setFrameSize(unsigned int width, unsigned int height);
    /// Keeps the window within the screen, less a sixteenth for what the desktop puts around it: one that would be
    /// larger, as wished for, by a new frame size or by the user, is made smaller in both directions. It returns to the
    /// width wished for when that fits again. Off unless the constructor without a window's size was called.
    /// @throws std::runtime_error "[VideoOutputDisplay::setFitScreen]: SDL_SetVideoMode failed: ..."
    void setFitScreen(bool on);
    /// Chooses what full screen does with frames of another aspect ratio: black borders when on; stretched when off, as
    /// at first.
    void setKeepAspect(bool on);

    /// Opens the window or the full screen anew, whichever is on.
    /// @throws std::runtime_error "[VideoOutputDisplay::setMode]: SDL_SetVideoMode failed: ..."
    void setMode();
    /// Handles the events that wait; write() does so too.
    /// @throws std::runtime_error "[VideoOutputDisplay::videoPollEvents]: SDL_SetVideoMode failed: ..."
    void videoPollEvents();
    /// Turns full screen on or off; what is on already is opened anew.
    /// @throws std::runtime_error as setMode()
    void toggleFullscreen(bool on);
    /// Whether full screen is on, by toggleFullscreen() or the key.
    bool getFullscreen() const;
    /// Sets the title of the window and of its icon.
    void setCaption(const std::string& caption);

    /// Whether the user asked to quit; never cleared.
    bool getQuit() const;
    /// Whether the application should hold.
    bool getPaused() const;
    /// Whether frames pass one at a time, each setting getPaused() again.
    bool getStepMode() const;
    /// Takes the oldest key press that the display has no use for, for keys of the application's own. Up to 32 wait;
    /// what comes then is lost.
    /// @return SDL's name of the key, as it is without shift: "left", "a", "=", "[+]" for that of the keypad; empty
    ///         when none waits
    std::string takeKey();
    /// Sets or clears getPaused(); whether frames pass one at a time is not changed.
    void setPaused(bool on);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// @}

} // namespace Ko

#endif
