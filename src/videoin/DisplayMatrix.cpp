// SPDX-License-Identifier: BSD-2-Clause
#include "videoin/DisplayMatrix.h"

#include "libav/Handles.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace Ko {

namespace {

/// Nine numbers, or null.
const std::uint8_t* displayMatrix(const AVStream& stream) {
    constexpr std::size_t wanted = 9 * sizeof(std::int32_t);
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(60, 31, 100)
    const AVCodecParameters& parameters = *stream.codecpar;
    const AVPacketSideData* data =
        av_packet_side_data_get(parameters.coded_side_data, parameters.nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
    return data && data->size >= wanted ? data->data : nullptr;
#else
    std::size_t size = 0;
    const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    return size >= wanted ? data : nullptr;
#endif
}

} // namespace

Orientation orientationOf(const AVStream& stream) {
    const std::uint8_t* const data = displayMatrix(stream);
    if (!data)
        return OR_UPRIGHT;
    std::int32_t m[5];
    std::memcpy(m, data, sizeof m);
    // A stored point is shown at (m[0] * x + m[3] * y, m[1] * x + m[4] * y), give or take an offset.
    const std::int64_t xx = m[0], yx = m[1], xy = m[3], yy = m[4];
    if (std::abs(xy) + std::abs(yx) > std::abs(xx) + std::abs(yy)) {
        if (xy < 0)
            return yx < 0 ? OR_ANTI_TRANSPOSED : OR_ROTATED_90;
        return yx < 0 ? OR_ROTATED_270 : OR_TRANSPOSED;
    }
    if (xx < 0)
        return yy < 0 ? OR_ROTATED_180 : OR_MIRRORED;
    return yy < 0 ? OR_FLIPPED : OR_UPRIGHT;
}

} // namespace Ko
