// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOINPUTVIDEOFILE_H
#define KOVANTA_VIDEOINPUTVIDEOFILE_H

#include "Kovanta/ColorMatrix.h"
#include "Kovanta/Export.h"
#include "Kovanta/Frac.h"
#include "Kovanta/Image.h"
#include "Kovanta/Rotate.h"
#include "Kovanta/VideoInputBase.h"

#include <memory>
#include <string>

namespace Ko {

/// @addtogroup videoin
/// @{

/// The first video stream of a file, in any container and codec that the installed libav reads, as long as it decodes
/// to planar 4:2:0 or to full-range planar 4:2:2; with setAnyFormat() nearly whatever it decodes to.
///
/// Positions, lengths and seek targets count ticks of the stream's time base; where a tick is the frame period (AVI,
/// and what VideoOutputVideoFile writes into mp4 and mov at whole rates) they count frames. The position is the time
/// stamp of the picture delivered last plus one tick, so what tell() returned is what seek() takes to get the same
/// picture next. Time stamps are the file's own and need not begin at 0 (recordings, MPEG program and transport
/// streams); the far end is the first one plus the length. Pictures that an edit list cuts away are not delivered, and
/// a cover picture counts as video only where there is no other.
///
/// One thread at a time per object. Opening and closing hold libAvMutex, so different objects may be used by different
/// threads at will. Every operation but setFormat(), setAnyFormat(), setLoop(), open(), close(), tell() and getError()
/// needs an opened source and throws std::logic_error "[VideoInputVideoFile::...]: Not opened." without one.
class KOVANTA_API VideoInputVideoFile : public VideoInput {
public:
    /// An unopened source.
    VideoInputVideoFile();
    /// As the default constructor and open(); releases everything when that throws.
    explicit VideoInputVideoFile(const std::string& filename);
    VideoInputVideoFile(const VideoInputVideoFile&) = delete;
    VideoInputVideoFile& operator=(const VideoInputVideoFile&) = delete;
    /// Closes.
    ~VideoInputVideoFile() override;

    /// Forces the container format, by libav's name for it ("avi", "matroska"), from the next open() on. An empty name
    /// restores detection.
    /// @throws std::logic_error "[VideoInputVideoFile::setFormat]: av_find_input_format failed."; detection is then
    ///         restored as well
    void setFormat(const std::string& name);

    /// Takes pictures of nearly every pixel format: those that are neither planar 4:2:0 nor full-range planar 4:2:2 of
    /// eight bits are brought to eight bits in studio range and delivered as PF_YCC444P, or as what convertIm() makes
    /// of that, PF_YCC420P without a detour. The same formats can be read from pictures that are taken as they are.
    ///
    /// Of samples v of n bits, with M = 2^n - 1, and all rounded to the nearest:
    /// - studio range becomes v / 2^(n-8), as ITU-R BT.601, BT.709 and BT.2020 scale it;
    /// - full range of more than eight bits becomes Y' = 219 v / M + 16 and C = 224 (v - 2^(n-1)) / M + 128, as ITU-R
    ///   BT.2100 defines both ranges; of eight bits it becomes what convertIm() makes of PF_JFIF, by its truncating
    ///   formula, so that a film and a still of it agree. Planar 4:2:0 that the file calls full range counts as such;
    ///   otherwise it is delivered as if it were studio range;
    /// - RGB, and palettes, become Y'CbCr of BT.601 by way of eight bits, as convertIm() makes it;
    /// - grey has chroma 128; unless the file tells, it is full range.
    ///
    /// Chroma is repeated as convertIm() does it, to the last odd column and row. Alpha is dropped. What holds no whole
    /// bytes of integers stays refused: floating point, one bit a pixel, Bayer patterns, XYZ.
    ///
    /// Off until set, kept over close() and open(); set on an opened source it takes effect on the next picture.
    VideoInputVideoFile& setAnyFormat(bool any);

    /// Opens a file and its first video stream; what the object had open is closed first. Where what stands before a
    /// colon in the name is a protocol of libav's, libav opens that; put "file:" before names from strangers.
    ///
    /// What was opened before a failure stays in the object, unusable, until close(), the next open() or the end of
    /// the object.
    /// @throws std::runtime_error "[VideoInputVideoFile::VideoInputVideoFile]: Failed to open FILENAME."
    /// @throws std::runtime_error
    ///         "[VideoInputVideoFile::VideoInputVideoFile]: Failed to find stream information in FILENAME."
    /// @throws std::runtime_error
    ///         "[VideoInputVideoFile::VideoInputVideoFile]: Failed to find video stream in FILENAME."
    /// @throws std::runtime_error "[VideoInputVideoFile::VideoInputVideoFile]: avcodec_find_decoder failed."
    /// @throws std::runtime_error "[VideoInputVideoFile::VideoInputVideoFile]: avcodec_open failed."
    /// @throws std::runtime_error "[VideoInputVideoFile::open]: Input pixel format of stream is not supported."; with
    ///         setAnyFormat() the name that libav has for the format follows in parentheses
    /// @throws std::bad_alloc
    void open(const std::string& filename);

    /// Closes the file. Harmless on an unopened source; open() may follow.
    void close();

    /// The frame rate in frames per second, reduced; {1, 0} when the file does not tell.
    Frac<unsigned int> getFrameRate() const;

    /// How pictures are to be turned for the eye, as the container tells (phones hold their camera in any way): what
    /// rotate() takes. Turns that are no quarters are taken for the nearest one. read() delivers pictures as stored.
    Orientation getOrientation() const;

    /// The matrix that made the stream's samples, as the file tells it and for convertIm() to take; CM_UNKNOWN where it
    /// does not tell, or names another one. RGB that setAnyFormat() takes comes out as CM_BT601, and that is told.
    ColorMatrix getColorMatrix() const;

    /// The range of the samples in the file, as it tells; CR_UNKNOWN where it does not, which nearly always means
    /// studio range. With setAnyFormat() pictures are delivered in studio range whatever this is.
    ColorRange getColorRange() const;

    /// One tick of positions and lengths, in seconds, reduced; {1, 0} for a file that has none.
    Frac<unsigned int> getTimeBase() const;

    /// The time of a position in seconds since the first picture, which is at 0; what lies before it is 0 as well. The
    /// picture that was delivered last is shown at `seconds(tell() - 1)`; with looping on the last one of a round has
    /// brought the position to 0 by then.
    double seconds(long position) const;

    /// What seek() takes by VP_BEGIN, for the next read() to deliver the picture that is shown at a time, counted as by
    /// seconds(): 0, the beginning, for the first picture, for times before it and for NaN. Exact where the frame rate
    /// is constant and known; elsewhere near it.
    long position(double seconds) const;

    /// How many pictures lead from the beginning to the one that was delivered last, which counts as well; 0 at the
    /// beginning. After a seek the container's count is taken where the rate is constant and it tells so (AVI, Ogg, mp4
    /// and mov), in which pictures that the recorder has left out count as well; otherwise it is -1 until the next
    /// rewind. Seeking that begins at the first picture counts on. With looping on it is 0 after the last picture of a
    /// round, when the source stands at the beginning again.
    long getFrameNumber() const;

    /// Delivers the next picture in display order, converted by convertIm() into the format that @p frame has: the one
    /// copy that is made of it. Damaged packets are skipped, and a failure to read ends the file: getError() tells.
    /// A picture that differs in size from the one before is
    /// delivered in its own size.
    /// @return false at the end of the file, where @p frame has been sized but holds nothing new; with looping on, the
    ///         first picture is delivered instead, unless the file gave none since the last rewind
    /// @throws std::logic_error as convertIm(), when it cannot convert into the format of @p frame; the picture is then
    ///         spent
    /// @throws std::runtime_error "[VideoInputVideoFile::open]: Input pixel format of stream is not supported." when
    ///         the stream changes to such a format midway, named as by open()
    /// @throws std::bad_alloc
    bool read(Image<>& frame) override;

    /// Moves to a position in ticks, by decoding forward from the key frame before it: the next read() delivers the
    /// first picture whose time stamp is not below the position returned. A target up to 0 is the beginning, and so is
    /// one by VP_END that lies at the first time stamp or before it; one past the far end goes as far as there are
    /// pictures. Where the length is unknown VP_END rewinds. AVI and ASF hold no presentation times; there the pictures
    /// are counted.
    /// @return the new position; below the target when the file ends before it
    /// @throws std::logic_error "[VideoInputVideoFile::seek]: Erroneous position indicator given!"
    /// @throws std::runtime_error "[VideoInputVideoFile::seek]: FILENAME: error while seeking." when the container
    ///         cannot be sought; a bare stream without one (.h264, .m2v) can be rewound only
    /// @throws whatever read() throws
    long seek(long offset, VideoPosId origin) override;

    /// The position in ticks; 0 when unopened.
    long tell() const override;

    /// Whether the position is the far end, or a read() has met the end of the file since the last seek.
    bool eof() const override;

    /// Size in pixels of the picture delivered last; before the first, as the file tells.
    unsigned int getWidth() const override;
    unsigned int getHeight() const override;

    /// The duration of the stream in ticks, or that of the file when the stream's is not known. When neither is:
    /// libav's mark for that, which is negative.
    long getLength() const override;

    /// What libav reported last since open(): why reading ended before the end of the file, or a damaged packet that
    /// was skipped, with the number of those. Empty while all is well, and when unopened.
    std::string getError() const;

    /// Makes the source start again at its end: the read() that reaches the far end leaves the position at 0. Off until
    /// set; kept over close() and open().
    void setLoop(bool loop) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// @}

} // namespace Ko

#endif
