// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOOUTPUTVIDEOFILE_H
#define KOVANTA_VIDEOOUTPUTVIDEOFILE_H

#include "Kovanta/ColorMatrix.h"
#include "Kovanta/Export.h"
#include "Kovanta/Frac.h"
#include "Kovanta/Image.h"
#include "Kovanta/VideoOutputBase.h"

#include <memory>
#include <string>

namespace Ko {

/// @addtogroup videoout
/// @{

/// Encodes frames into a video file on a thread of its own.
///
/// The container follows from the file name's extension; the encoder is the container's default one or one chosen by
/// name. write() copies the frame into a short queue and returns; the writer thread encodes. A full queue holds write()
/// up, no frame is ever dropped. Every file opened here is opened and closed under libAvMutex.
///
/// When the writer meets an error (a frame of another size, a full disk) it writes one line to standard error,
/// "Thread ID: Error: REASON", and ends; its normal end at close() leaves "Thread ID: Interrupted." there. After an
/// error write() goes on queueing until the queue is full and then waits for ever, unless setThrowOnFailure() is on.
///
/// One thread at a time per object; getError() may be called from any.
class KOVANTA_API VideoOutputVideoFile : public VideoOutput {
public:
    /// A closed output, with a queue of 5 frames and no encoder chosen.
    VideoOutputVideoFile();
    /// Opens at once. @throws as open(); nothing is left behind then
    VideoOutputVideoFile(unsigned int width, unsigned int height, const std::string& filename,
                         Frac<unsigned int> frameRate, unsigned int bitRate);
    VideoOutputVideoFile(const VideoOutputVideoFile&) = delete;
    VideoOutputVideoFile& operator=(const VideoOutputVideoFile&) = delete;
    /// Closes.
    ~VideoOutputVideoFile() override;

    /// Creates the file, over an existing one, and starts the writer. An open output is closed first. The encoder that
    /// is used stays chosen for later calls. libavcodec's defaults hold for all that is not said here.
    /// @param width,height of the frames in pixels
    /// @param filename its extension (avi, mp4, mov, mkv, webm, mpg, ts, flv, ogv, ...) names the container
    /// @param frameRate frames per second, {25, 1} or {30000, 1001}
    /// @param bitRate bits per second
    /// @throws std::runtime_error "[VideoOutputVideoFile::open]: guess_format failed." (unknown extension),
    ///         "... avcodec_find_encoder failed." (no default encoder), "... url_fopen failed to open FILENAME.",
    ///         "... av_write_header failed." (the container refuses the encoder, or has no code for its stream, so
    ///         that nobody could read the file), "... The container cannot hold the frame rate." (frames closer
    ///         together than its time stamps, as above 1000 a second in mkv and flv, or too far apart),
    ///         "[VideoOutputVideoFile::openVideo]: avcodec_open failed." (the encoder refuses size, rate or bit rate);
    ///         without memory also "[VideoOutputVideoFile::open]: avformat_alloc_context failed.",
    ///         "... av_set_parameters failed.", "[VideoOutputVideoFile::addVideoStream]: av_new_stream failed.",
    ///         "[allocPicture]: avcodec_alloc_frame failed." and "[allocPicture]: av_malloc failed."
    /// @throws std::logic_error "[VideoOutputVideoFile::openVideo]: Can only convert to 4:2:0 Planar YUV." when the
    ///         encoder's first choice is another pixel format
    /// @throws boost::thread_resource_error, std::bad_alloc
    /// After a failure isOpened() is true, and close() releases what was begun.
    void open(unsigned int width, unsigned int height, const std::string& filename, Frac<unsigned int> frameRate,
              unsigned int bitRate);

    /// Queues a copy of the frame; waits while the queue is full (an interruption point of Boost).
    /// @param image of the size given to open(), in PF_YCC420P or a format that convertIm() turns into it (PF_YCC444P,
    ///        PF_Y). Whether it fits is found out by the writer.
    /// @return true
    /// @throws std::logic_error "[VideoOutputVideoFile::write]: Not opened." when closed, and after a failed open()
    /// @throws std::runtime_error as setThrowOnFailure() says
    /// @throws boost::thread_interrupted, std::bad_alloc; the frame is not queued then
    bool write(const Image<>& image) override;

    /// Lets the writer encode every queued frame, ends it, and finishes the file. Does nothing when not open. A failure
    /// to finish the file is not thrown, unless setThrowOnFailure() is on: getError() tells.
    /// @throws std::runtime_error as setThrowOnFailure() says; the file is closed then
    void close();

    /// Whether there is something for close() to do: true after open(), also after a failed one.
    bool isOpened() const;

    /// Chooses the encoder for the next open(), by libavcodec's name for it ("mpeg4", "libx264").
    /// @throws std::logic_error "[VideoOutputVideoFile::setEncoder]: avcodec_find_encoder_by_name failed."; then the
    ///         next open() uses the container's default encoder
    VideoOutputVideoFile& setEncoder(const std::string& name);
    /// Asks for interlaced coding from the next open() on.
    VideoOutputVideoFile& setInterlace(bool on);
    /// Sets how many frames the queue holds from the next open() on. With 0 every write() would wait for ever.
    VideoOutputVideoFile& setQueueSize(unsigned int n);

    /// Hands an option to the encoder at each open() from now on, under libavcodec's names: "preset" and "crf" for
    /// libx264, "g" for the distance of key frames, "threads". The last value of a name counts; an empty one takes the
    /// option back. open() throws std::logic_error "[VideoOutputVideoFile::openVideo]: The encoder has no option
    /// NAME.",
    /// "...: The option NAME does not take VALUE." and, for what open() says itself,
    /// "...: The option NAME would change what is written."; a value that only the encoder can judge ends in
    /// "...: avcodec_open failed."
    VideoOutputVideoFile& setOption(const std::string& name, const std::string& value);
    /// Sets the shape of a pixel, width to height, from the next open() on: {16, 15} for a DV picture of 4:3 say.
    /// Containers that cannot hold it leave it out. {0, 1}, as at the start, is unknown: players take it for square.
    VideoOutputVideoFile& setPixelAspect(Frac<unsigned int> aspect);
    /// Says what the samples are, from the next open() on, so that players need not guess: what made them of RGB, and
    /// which bytes they use. Without setAnyFormat() only the file's tags change, and frames are encoded as they are.
    /// CM_BT709 and CM_BT2020 also tag the primaries and the transfer function of their standards; CM_BT601, which
    /// serves several systems, tags the matrix alone (the others by setOption() under "color_primaries" and
    /// "color_trc"). Of what is unknown, as both are at the start, the file says nothing. Frames of a
    /// VideoInputVideoFile with its setAnyFormat() have its matrix and are studio range whatever its file is: pass the
    /// matrix on, with CR_STUDIO. Containers and encoders without place for a tag leave it out.
    /// @throws std::logic_error "[VideoOutputVideoFile::setColor]: Unknown color matrix.", "...: Unknown color range."
    ///         for what is no ColorMatrix or ColorRange; nothing changes then
    VideoOutputVideoFile& setColor(ColorMatrix matrix, ColorRange range);
    /// Takes frames of more formats and sizes from the next open() on. Off until set.
    ///
    /// - Frames may have any format that convertIm() turns into PF_YCC444P: PF_RGB, PF_RGBA, PF_YUY2, PF_JFIF and
    ///   PF_JFIF422P as well.
    /// - They are brought to what setColor() says of the file: RGB by its matrix (BT.601 without), PF_JFIF and
    ///   PF_JFIF422P from BT.601, and all to full range with CR_FULL, to the nearest. Other Y'CbCr frames have that
    ///   matrix already.
    /// - Odd sizes go to the encoder as 4:4:4 where it takes that (libx264, libx265, libvpx-vp9, ffv1, ...): the last
    ///   column and row keep their colours, but not every player shows such files. Encoders of nothing but 4:2:0 that
    ///   take odd sizes (mpeg4, mpeg2video, libvpx) get the neighbours' chroma there; the others still refuse.
    /// - Encoders may be those that list 4:2:0 or 4:4:4 anywhere, not only first, and Motion JPEG, whose files are full
    ///   range and BT.601 whatever setColor() says. For other encoders open() throws std::logic_error
    ///   "[VideoOutputVideoFile::openVideo]: The encoder lists neither 4:2:0 nor 4:4:4 of eight bits."
    VideoOutputVideoFile& setAnyFormat(bool on);

    /// Writes mp4, mov and their like in fragments from the next open() on, one at each key frame and at least one a
    /// second: what was written before the disk was full or the program ended can be read. Without it such a file is
    /// of no use before close() has written its index. Other containers are not concerned. Off until set.
    VideoOutputVideoFile& setFragments(bool on);
    /// Makes failures of the writer exceptions: when on, write() and close() throw std::runtime_error with the reason
    /// that getError() has, also a write() that is already waiting for room. The destructor never throws. Off until
    /// set, kept over close() and open(); to be set before the first write().
    VideoOutputVideoFile& setThrowOnFailure(bool on);

    /// What went wrong since the last open(): the reason the writer ended with, or why close() could not finish the
    /// file. Empty while all is well. Thread-safe.
    std::string getError() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// @}

} // namespace Ko

#endif
