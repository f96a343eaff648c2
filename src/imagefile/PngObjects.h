// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_PNGOBJECTS_H
#define KOVANTA_SRC_IMAGEFILE_PNGOBJECTS_H

#include "imagefile/GuardedStep.h"

#include <png.h>

#include <stdexcept>

namespace Ko {

/// How to make and to release one kind of libpng object.
struct PngKind {
    png_structp (*create)();
    void (*destroy)(png_structpp, png_infopp);
    const char* function;
    const char* structureReason;
    const char* errorText;
};

/// A libpng object with its info structure. Errors and warnings print to standard error, as libpng has it.
class PngObject {
public:
    /// @throws std::runtime_error "[function]: Error creating PNG read structure." (or write structure),
    ///         "[function]: Error creating PNG info structure."
    explicit PngObject(const PngKind& kind);
    ~PngObject();
    PngObject(const PngObject&) = delete;
    PngObject& operator=(const PngObject&) = delete;

    /// Runs libpng calls (see guarded()) on the object.
    /// @throws std::runtime_error with the kind's error text
    template <class Step>
    void run(Step step) {
        png_structp const target = png;
        png_infop const targetInfo = info;
        if (!guarded(*png_set_longjmp_fn(png, std::longjmp, sizeof(std::jmp_buf)),
                     [target, targetInfo, step] { step(target, targetInfo); }))
            throw std::runtime_error(ofKind.errorText);
    }

private:
    const PngKind& ofKind;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

extern const PngKind pngReading;
extern const PngKind pngWriting;

} // namespace Ko

#endif
