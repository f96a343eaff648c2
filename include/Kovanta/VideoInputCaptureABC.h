// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIDEOINPUTCAPTUREABC_H
#define KOVANTA_VIDEOINPUTCAPTUREABC_H

#include "Kovanta/VideoInputBase.h"

#include <string>
#include <vector>

namespace Ko {

/// @addtogroup videoin
/// @{

/// Which fields of interlaced video a camera is asked for.
enum FIELD_ORDER : unsigned int {
    FO_ANY = 0, ///< Whatever the device prefers.
    FO_TOP = 1  ///< Top fields only; devices without interlaced video ignore it.
};

/// A live source of frames: it has to be started on a device, never ends and cannot be repositioned.
/// One thread at a time per object.
class KOVANTA_API VideoInputCaptureABC : public VideoInput {
public:
    ~VideoInputCaptureABC() override;
    /// @return always false
    bool eof() const override;

    /// Opens a device and readies it for read(). Ends what was initialised before.
    /// @param device number of the device
    /// @param width, height wished size of the frames in pixels; getWidth() and getHeight() tell what it became
    /// @param input number of the device's input
    virtual void init(unsigned int device, unsigned int width, unsigned int height, unsigned int input) = 0;
    /// Describes the devices of this machine, one entry a device number.
    virtual std::vector<std::string> listDevs() = 0;
    /// Ends the capture and releases the device. Nothing happens when it is not initialised.
    virtual void close() = 0;
    /// Starts the capture, for sources that init() does not start already.
    virtual void start();
    /// Interrupts the capture, for sources that can.
    virtual void stop();
    /// Wishes a number of buffers between device and application; takes effect at the next init().
    virtual void setBufferCount(unsigned int count);
    /// Wishes the fields of interlaced video; takes effect at the next init().
    virtual void setFieldOrder(FIELD_ORDER order) = 0;
};

/// @}

} // namespace Ko

#endif
