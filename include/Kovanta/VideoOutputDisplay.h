#ifndef KOVANTA_VIDEOOUTPUTDISPLAY_H
#define KOVANTA_VIDEOOUTPUTDISPLAY_H

#include "Kovanta/Export.h"
#include "Kovanta/VideoOutputBase.h"

#include <cstdint>
#include <memory>
#include <string>

struct SDL_Overlay;
struct SDL_Rect;
struct SDL_Surface;

/// The title that a new window gets, "VideoOutputDisplay". May be pointed at another text before a window is opened.
extern KOVANTA_API char* DEFAULT_CAPTION;

namespace Ko {

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
/// Bound to one thread, the one that owns SDL's video (the main thread, in practice). One window at a time: the
/// destructor ends SDL for the process. A broken connection to the X server, or a window that another program
/// destroyed, ends in a std::runtime_error from the operation that notices and from those after it,
/// "[VideoOutputDisplay::...]: Lost the connection to the X server." or "...: X error: ....": destroy the display then.
class KOVANTA_API VideoOutputDisplay : public VideoOutput {
public:
    /// Opens the window. Takes a tenth of a second.
    /// @param windowWidth in pixels, at least 1
    /// @param windowHeight ignored: the height follows from @p windowWidth and the frames' aspect ratio
    /// @param width, height size of the frames in pixels, even
    /// @param fullscreen start in full screen, where the picture is stretched over the largest mode
    /// @throws std::logic_error "[VideoOutputDisplay::VideoOutputDisplay]: Width and height of must both be even!",
    ///         "[VideoOutputDisplay::VideoOutputDisplay]: Width and height must not be zero."
    /// @throws std::runtime_error "[VideoOutputDisplay::VideoOutputDisplay]: " + "Unable to init SDL: ..." when there
    /// is
    ///         no X server, "No modes available.", "SDL_SetVideoMode failed: ..." or "SDL_CreateYUVOverlay failed:
    ///         ..."; from "No modes available." on, SDL stays initialised
    VideoOutputDisplay(unsigned int windowWidth, unsigned int windowHeight, unsigned int width, unsigned int height,
                       bool fullscreen);
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
    bool write(const Image<unsigned char>& image) override;

    /// Opens the window or the full screen anew, whichever is on.
    /// @throws std::runtime_error "[VideoOutputDisplay::setMode]: SDL_SetVideoMode failed: ..."
    void setMode();
    /// Handles the events that wait; write() does so too.
    /// @throws std::runtime_error "[VideoOutputDisplay::videoPollEvents]: SDL_SetVideoMode failed: ..."
    void videoPollEvents();
    /// Turns full screen on or off; what is on already is opened anew.
    /// @throws std::runtime_error as setMode()
    void toggleFullscreen(bool on);
    /// Sets the title of the window and of its icon.
    void setCaption(const std::string& caption);

    /// Whether the user asked to quit; never cleared.
    bool getQuit() const;
    /// Whether the application should hold.
    bool getPaused() const;
    /// Sets or clears that flag; whether frames pass one at a time is not changed.
    void setPaused(bool on);

private:
    struct KOVANTA_LOCAL OverlayDeleter {
        void operator()(SDL_Overlay* overlay) const noexcept;
    };

    KOVANTA_LOCAL void initVideo();
    KOVANTA_LOCAL void createOverlay();
    KOVANTA_LOCAL void openScreen(std::uint32_t w, std::uint32_t h, std::uint32_t flags, const char* function);
    KOVANTA_LOCAL void applyMode(const char* function);
    KOVANTA_LOCAL void setWindowWidth(std::uint32_t w);
    KOVANTA_LOCAL void setDisplayRect(std::uint32_t w, std::uint32_t h);
    KOVANTA_LOCAL void blacken();
    KOVANTA_LOCAL void lockOverlay();
    KOVANTA_LOCAL void unlockOverlay();

    SDL_Surface* screen = nullptr; // SDL's own
    std::unique_ptr<SDL_Overlay, OverlayDeleter> overlay;
    std::unique_ptr<SDL_Rect> displayRect;
    std::uint32_t windowWidth;
    std::uint32_t windowHeight = 1;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t fullscreenWidth = 0;
    std::uint32_t fullscreenHeight = 0;
    bool fullscreen;
    bool quit = false;
    bool stepMode = false;
    bool paused = false;
    bool locked = false; // the overlay stays locked when a conversion throws
    bool blank = true;   // the overlay's memory was never written
};

} // namespace Ko

#endif
