// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOINPUTCAPTUREV4L_H
#define KOVANTA_VIDEOINPUTCAPTUREV4L_H

#include "Kovanta/Frac.h"
#include "Kovanta/VideoInputCaptureABC.h"

#include <linux/videodev2.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Ko {

/// @addtogroup videoin
/// @{

/// A camera, or another video capture device, behind Linux's Video4Linux2 interface ("/dev/video0", ...).
///
/// The device has to offer planar 4:2:0 ("YU12", preferred) or packed 4:2:2 ("YUYV"), or others that
/// setEmulatedFormats() makes one of these. Its buffers are mapped, and the conversion into the caller's image is the
/// only copy of a frame. PF_YCC444P takes frames of either kind; other formats of the caller work as far as convertIm()
/// has the pair.
///
/// Every failed call to the system throws std::runtime_error with the reason of the system at its end. One thread at a
/// time per object, but for setTimeout(), which limits how long read() waits. Where a camera may fall silent, set that,
/// or call waitForFrame() before read(); an interruption of the boost::thread ends the wait as well.
class KOVANTA_API VideoInputCaptureV4L : public VideoInputCaptureABC {
public:
    /// Opens nothing yet: two buffers, any field order.
    VideoInputCaptureV4L();
    VideoInputCaptureV4L(const VideoInputCaptureV4L&) = delete;
    VideoInputCaptureV4L& operator=(const VideoInputCaptureV4L&) = delete;
    /// Closes. A failure of that goes to standard error.
    ~VideoInputCaptureV4L() override;

    /// Waits for the next frame and converts it into the format that @p frame has; gives it the negotiated size and
    /// memory of its own, and stamps its `sequenceNumber` with the number of frames delivered before it since init().
    /// When a conversion is refused, the frame is lost and the stream goes on; when the wait is ended, none is.
    /// @return true
    /// @throws std::runtime_error "[VideoInputCaptureV4L]::read: Ioctl VIDIOC_DQBUF failed: " (also before init())
    /// @throws std::runtime_error "[VideoInputCaptureV4L::read]: Ioctl VIDIOC_QBUF failed: "
    /// @throws std::runtime_error "[VideoInputCaptureV4L::read]: Driver returned an unknown buffer."
    /// @throws std::runtime_error "[VideoInputCaptureV4L::read]: No frame within the timeout." after setTimeout()
    /// @throws boost::thread_interrupted within a twentieth of a second of boost::thread::interrupt()
    /// @throws what Image::size() and convertIm() throw
    bool read(Image<>& frame) override;
    /// Does nothing. @return tell()
    long seek(long offset, VideoPosId origin) override;
    /// @return the number of frames delivered since init()
    long tell() const override;
    /// @return the negotiated width in pixels, 0 before the first init()
    unsigned int getWidth() const override;
    /// @return the negotiated height in pixels, 0 before the first init()
    unsigned int getHeight() const override;
    /// @return -1: a camera has no end
    long getLength() const override;

    /// Opens "/dev/video" + @p device, negotiates format and size, maps the buffers and starts streaming. An object
    /// that is initialised already is closed first. After an exception the object is closed.
    /// @param device number of the device
    /// @param width, height wished size in pixels, which the driver may change to one that it has
    /// @param input ignored; the device's input 0 is selected
    /// @throws std::runtime_error "[VideoInputCaptureV4L::init]: Cannot open " + path + ": "
    /// @throws std::runtime_error "[VideoInputCaptureV4L::init]: " + call + " failed: ", where call is one of
    ///         "Ioctl VIDIOC_QUERYCAP", "Ioctl VIDIOC_G_FMT", "Ioctl VIDIOC_REQBUFS", "Ioctl VIDIOC_QUERYBUF", "mmap",
    ///         "Ioctl VIDIOC_QBUF", "Ioctl VIDIOC_STREAMON"
    /// @throws std::runtime_error
    ///         "[VideoInputCaptureV4L::init]: Device does not support V4L2_CAP_VIDEO_CAPTURE and V4L2_CAP_STREAMING."
    /// @throws std::runtime_error "[VideoInputCaptureV4L::init]: Driver's buffer is smaller than a frame."
    /// @throws what setFormat(), close() and Image::size() throw
    void init(unsigned int device, unsigned int width, unsigned int height, unsigned int input) override;
    /// Describes the devices 0 to 63, whether or not this object is initialised: card name and bus, or "none" for a
    /// number that cannot be opened. Ends with the last device that answered. A device that opens but does not answer
    /// has no entry, so the entries after it have moved up by one.
    std::vector<std::string> listDevs() override;
    /// Unmaps the buffers and closes the device. Everything is released whatever fails; the first failure is thrown.
    /// @throws std::runtime_error "[VideoInputCaptureV4L::close]: munmap failed: ",
    ///         "[VideoInputCaptureV4L::close]: close failed: "
    void close() override;
    /// The driver may use more or fewer than the @p count wished for here; its number then stands for later calls of
    /// init() too. 2 at first.
    void setBufferCount(unsigned int count) override;
    /// @throws std::logic_error "[VideoInputCaptureV4L::setFieldOrder]: Unknown field order."
    void setFieldOrder(FIELD_ORDER order) override;

    /// Wishes that libv4l2 speaks to the device, which takes Motion JPEG, vendors' formats and many more and gives
    /// planar 4:2:0; takes effect at the next init(). It chooses by size and rate what the camera sends, so that a
    /// camera that also has raw pictures gives large ones faster. A picture that it converts is one copy more. One that
    /// it cannot decode is skipped: a read() may then wait although waitForFrame() said that it would not. What libv4l2
    /// complains of goes to standard error.
    /// @param on false, as at first: the device as it is
    /// @return this object
    VideoInputCaptureV4L& setEmulatedFormats(bool on);
    /// Limits how long read() waits. May be called by any thread, and by a signal handler, and then holds for a read()
    /// that waits already: a handler that sets 1 ends the wait.
    /// @param milliseconds 0, as at first, is no limit
    void setTimeout(unsigned int milliseconds);
    /// Waits until read() would not: for programs that do something else as long as no frame comes.
    /// @param milliseconds at most; 0 only asks
    /// @return true when read() finds a frame, or a reason to throw; false when the time is up or a signal handler
    ///         ended the wait; one that ran just before it began does not, so wait in slices
    /// @throws boost::thread_interrupted as read()
    bool waitForFrame(unsigned int milliseconds) const;

    /// Wishes a number of frames per second; takes effect at the next init(). A driver takes the nearest that it has,
    /// or keeps its own.
    /// @param rate 0/1, as at first, leaves the device as it is
    void setFrameRate(Frac<unsigned int> rate);
    /// @return the frames per second that the initialised device says it is set to (a camera may deliver fewer in the
    ///         dark), 0/1 when it does not say
    Frac<unsigned int> getFrameRate() const;
    /// @return when the driver took the frame read last, in microseconds of its clock (nearly always CLOCK_MONOTONIC);
    ///         0 before the first one since init()
    std::int64_t getTimeStamp() const;
    /// @return the driver's number of the frame read last, which counts lost ones too; 0 before the first one since
    ///         init(), and with a driver that does not count
    std::uint32_t getDriverSequence() const;
    /// @return how many of the driver's numbers were left out between the frames read since init(): frames that the
    ///         driver dropped, as a rule because all buffers were full
    std::uint64_t getLostFrames() const;

    /// Prints the inputs of the initialised device to standard output, one line each.
    void enumInputs() const;
    /// Prints the pixel formats of the initialised device to standard output, one line each.
    void enumFmts() const;
    /// @return the initialised device's description of a V4L2 four-character code, "unknown" when it has none
    std::string fmt2string(unsigned int fourcc) const;
    /// @param standard a set of V4L2_STD_ bits
    /// @return the names of the initialised device's video standards that share a bit with it, each followed by a blank
    std::string std2string(unsigned long long standard) const;
    /// Sets the format on the initialised device, with the first pixel format of the library's preference that the
    /// device takes. Called by init(); a device that is streaming refuses.
    /// @param format as read from the device, with the wished size and field
    /// @throws std::runtime_error "[VideoInputCaptureV4L::setFormat]: Pixel format of camera is not supported. Uncle
    ///         Brom wants YOU to implement it."
    /// @throws std::runtime_error "[VideoInputCaptureV4L::setFormat]: Ioctl VIDIOC_S_FMT failed: "
    void setFormat(v4l2_format format);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// @}

} // namespace Ko

#endif
