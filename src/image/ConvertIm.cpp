#include "Kovanta/ConvertIm.h"

#include "image/FormatTable.h"
#include "image/ImageLayout.h"
#include "util/Errors.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

namespace {

using Ko::Image;
using Routine = void (*)(Image<unsigned char>& dst, const Image<unsigned char>& src);

void identityTransform(Image<unsigned char>& dst, const Image<unsigned char>& src) {
    dst = src;
}

void unsupportedConversion(Image<unsigned char>& dst, const Image<unsigned char>& src) {
    Ko::throwLogicError("convertIm", "Don't know how to convert from " + fmt2string(src.format) + " to " +
                                         fmt2string(dst.format) + ".");
}

Routine branchTable[Ko::formatCount][Ko::formatCount]; // [target][source]
bool isInit = false;
boost::mutex initMutex;

void initBranchTable() {
    using namespace Ko;
    for (std::size_t target = 0; target < formatCount; ++target) {
        for (Routine& cell : branchTable[target])
            cell = unsupportedConversion;
        branchTable[target][target] = identityTransform;
    }
    branchTable[PF_YCC444P][PF_RGB] = RGB_2_YCC444P;
    branchTable[PF_YCC444P][PF_RGBA] = RGB_2_YCC444P;
    branchTable[PF_YCC444P][PF_Y] = Y_2_YCC444P;
    branchTable[PF_YCC444P][PF_JFIF] = JFIF_2_YCC444P;
    branchTable[PF_YCC444P][PF_JFIF422P] = JFIF422P_2_PF_YCC444P;
    branchTable[PF_YCC444P][PF_YCC420P] = YCC420P_2_YCC444P;
    branchTable[PF_YCC444P][PF_YUY2] = YUY2_2_YCC444P;
    branchTable[PF_YCC420P][PF_Y] = Y_2_YCC444P;
    branchTable[PF_YCC420P][PF_YCC444P] = YCC444P_2_YCC420P;
    branchTable[PF_RGB][PF_YCC444P] = YCC444P_2_RGB;
    branchTable[PF_JFIF][PF_YCC444P] = YCC444P_2_JFIF;
    branchTable[PF_Y][PF_YCC444P] = YCC444P_2_Y;
}

/// A format outside the enumeration, left behind by a refused fmt(), must never become an index.
Routine findRoutine(Ko::PIXEL_FORMAT target, Ko::PIXEL_FORMAT source) {
    if (target >= Ko::formatCount || source >= Ko::formatCount)
        return unsupportedConversion;
    return branchTable[target][source];
}

} // namespace

namespace Ko {

void convertIm(Image<unsigned char>& dst, const Image<unsigned char>& src) {
    {
        const boost::lock_guard<boost::mutex> lock(initMutex);
        if (!isInit) {
            initBranchTable();
            isInit = true;
        }
    }
    ImageLayout::resizeTarget(dst, src.width, src.height, "convertIm");
    findRoutine(dst.format, src.format)(dst, src);
}

} // namespace Ko
