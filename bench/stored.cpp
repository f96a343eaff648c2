// SPDX-License-Identifier: BSD-2-Clause
// Pictures as decoders store them, brought to 4:2:0 or 4:4:4 of eight bits in studio range: what read() adds to a
// stream that setAnyFormat() opened, beside libyuv, libswscale and memcpy of as many bytes. Arguments are those of
// Google Benchmark, and --table=FILE.
#include "Contest.h"
#include "libav/Handles.h"
#include "videoin/ConvertStored.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
#ifdef BENCH_SWSCALE
#include <libswscale/swscale.h>
#endif
}
#ifdef BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace bench;

/// A picture of some pixel format, its rows and their memory aligned as decoders do it.
struct Picture {
    Picture(AVPixelFormat format, int w, int h)
        : frame(av_frame_alloc()) {
        frame->format = format;
        frame->width = w;
        frame->height = h;
        av_frame_get_buffer(frame.get(), 0);
        std::minstd_rand random(3);
        for (const AVBufferRef* buffer : frame->buf)
            for (std::size_t i = 0; buffer && i < buffer->size; ++i)
                buffer->data[i] = static_cast<std::uint8_t>(i % 2 == 1 ? 2 : random() >> 16); // ten bits at most
    }
    Ko::libav::FrameHandle frame;
};

using Convert = void (*)(const AVFrame& from, Ko::Image<>& to);

struct Job {
    const char* name;
    AVPixelFormat from;
    Ko::PIXEL_FORMAT to;
    Convert libyuv = nullptr;
    Ko::ColorRange range = Ko::CR_STUDIO;
};

#ifdef BENCH_LIBYUV
const std::uint16_t* words(const std::uint8_t* plane) {
    return reinterpret_cast<const std::uint16_t*>(plane);
}

template <auto function, int bytes>
void byLibyuv(const AVFrame& from, Ko::Image<>& to) {
    const auto at = [&](int p) {
        return to.plane[p].row(0);
    };
    const auto stride = [&](int p) {
        return static_cast<int>(to.plane[p].width);
    };
    const int* lines = from.linesize;
    if constexpr (bytes == 2)
        function(words(from.data[0]), lines[0] / 2, words(from.data[1]), lines[1] / 2, words(from.data[2]),
                 lines[2] / 2, at(0), stride(0), at(1), stride(1), at(2), stride(2), from.width, from.height);
    else
        function(from.data[0], lines[0], from.data[1], lines[1], from.data[2], lines[2], at(0), stride(0), at(1),
                 stride(1), at(2), stride(2), from.width, from.height);
}
template <auto function>
void byLibyuvOfTwo(const AVFrame& from, Ko::Image<>& to) {
    function(from.data[0], from.linesize[0], from.data[1], from.linesize[1], to.plane[0].row(0),
             static_cast<int>(to.plane[0].width), to.plane[1].row(0), static_cast<int>(to.plane[1].width),
             to.plane[2].row(0), static_cast<int>(to.plane[2].width), from.width, from.height);
}
template <auto function>
void byLibyuvOfOne(const AVFrame& from, Ko::Image<>& to) {
    function(from.data[0], from.linesize[0], to.plane[0].row(0), static_cast<int>(to.plane[0].width),
             to.plane[1].row(0), static_cast<int>(to.plane[1].width), to.plane[2].row(0),
             static_cast<int>(to.plane[2].width), from.width, from.height);
}
#define BY_LIBYUV(...) __VA_ARGS__
#else
#define BY_LIBYUV(...) nullptr
#endif

const Job jobs[] = {
    {"4:2:0 of 10 bits to 4:2:0", AV_PIX_FMT_YUV420P10LE, Ko::PF_YCC420P, BY_LIBYUV(byLibyuv<libyuv::I010ToI420, 2>)},
    {"4:2:2 of 10 bits to 4:2:0", AV_PIX_FMT_YUV422P10LE, Ko::PF_YCC420P, BY_LIBYUV(byLibyuv<libyuv::I210ToI420, 2>)},
    {"4:4:4 of 10 bits to 4:4:4", AV_PIX_FMT_YUV444P10LE, Ko::PF_YCC444P, BY_LIBYUV(byLibyuv<libyuv::I410ToI444, 2>)},
    {"4:2:0 of 10 bits to 4:4:4", AV_PIX_FMT_YUV420P10LE, Ko::PF_YCC444P},
    {"P010 to 4:2:0", AV_PIX_FMT_P010LE, Ko::PF_YCC420P},
    {"NV12 to 4:2:0", AV_PIX_FMT_NV12, Ko::PF_YCC420P, BY_LIBYUV(byLibyuvOfTwo<libyuv::NV12ToI420>)},
    {"NV12 to 4:4:4", AV_PIX_FMT_NV12, Ko::PF_YCC444P},
    {"4:2:2 to 4:4:4", AV_PIX_FMT_YUV422P, Ko::PF_YCC444P, BY_LIBYUV(byLibyuv<libyuv::I422ToI444, 1>)},
    {"4:2:2 to 4:2:0", AV_PIX_FMT_YUV422P, Ko::PF_YCC420P, BY_LIBYUV(byLibyuv<libyuv::I422ToI420, 1>)},
    {"YUYV to 4:2:0", AV_PIX_FMT_YUYV422, Ko::PF_YCC420P, BY_LIBYUV(byLibyuvOfOne<libyuv::YUY2ToI420>)},
    {"full-range 4:2:0 to 4:2:0", AV_PIX_FMT_YUVJ420P, Ko::PF_YCC420P, nullptr, Ko::CR_FULL},
    {"full-range 4:2:0 to 4:4:4", AV_PIX_FMT_YUVJ420P, Ko::PF_YCC444P, nullptr, Ko::CR_FULL},
    {"BGRX to 4:4:4", AV_PIX_FMT_BGR0, Ko::PF_YCC444P, BY_LIBYUV(byLibyuvOfOne<libyuv::ARGBToI444>)},
    {"planar RGB to 4:4:4", AV_PIX_FMT_GBRP, Ko::PF_YCC444P},
    {"planar RGB of 10 bits to 4:4:4", AV_PIX_FMT_GBRP10LE, Ko::PF_YCC444P},
};

#ifdef BENCH_SWSCALE
Contender swscale(const Job& job, const std::shared_ptr<Picture>& from, const std::shared_ptr<Ko::Image<>>& to) {
    const AVPixelFormat target = job.to == Ko::PF_YCC444P ? AV_PIX_FMT_YUV444P : AV_PIX_FMT_YUV420P;
    const AVFrame& frame = *from->frame;
    const std::shared_ptr<SwsContext> context(sws_getContext(frame.width, frame.height, job.from, frame.width,
                                                             frame.height, target, SWS_POINT, nullptr, nullptr,
                                                             nullptr),
                                              sws_freeContext);
    return {"libswscale", Side::peer, [=] {
                std::uint8_t* planes[4] = {};
                int strides[4] = {};
                for (int p = 0; p < 3; ++p) {
                    planes[p] = to->plane[p].row(0);
                    strides[p] = static_cast<int>(to->plane[p].width);
                }
                sws_scale(context.get(), from->frame->data, from->frame->linesize, 0, from->frame->height, planes,
                          strides);
            }};
}
#endif

Contest contestOf(const Job& job, unsigned w, unsigned h) {
    const auto from = std::make_shared<Picture>(job.from, static_cast<int>(w), static_cast<int>(h));
    const auto to = std::make_shared<Ko::Image<>>(job.to);
    to->size(w, h);
    const auto room = std::make_shared<Ko::RowRoom>();
    const Ko::StoredFormat format = *Ko::storedFormatOf(job.from, job.range);
    Contest contest{job.name + (", " + std::to_string(w) + "x" + std::to_string(h)), double(w) * h, {}};
    contest.contenders.push_back({"Kovanta", Side::ours, [=] {
                                      Ko::convertStored(*to, *from->frame, format, *room);
                                  }});
#ifdef BENCH_LIBYUV
    if (job.libyuv)
        contest.contenders.push_back({"libyuv", Side::peer, [=, run = job.libyuv] {
                                          run(*from->frame, *to);
                                      }});
#endif
#ifdef BENCH_SWSCALE
    contest.contenders.push_back(swscale(job, from, to));
#endif
    const auto read =
        static_cast<std::size_t>(av_image_get_buffer_size(job.from, from->frame->width, from->frame->height, 1));
    const std::size_t written = std::size_t{w} * h * (job.to == Ko::PF_YCC444P ? 6 : 3) / 2;
    const auto memory = std::make_shared<std::vector<unsigned char>>(2 * (read + written));
    contest.contenders.push_back({"memcpy", Side::bound, [=] {
                                      std::memcpy(memory->data() + read + written, memory->data(),
                                                  (read + written) / 2);
                                  }});
    return contest;
}

} // namespace

int main(int argc, char** argv) {
    constexpr std::pair<unsigned, unsigned> sizes[] = {{640, 480}, {1920, 1080}};
    std::vector<Contest> contests;
    for (const auto& [w, h] : sizes)
        for (const Job& job : jobs)
            contests.push_back(contestOf(job, w, h));
    return runContests(argc, argv, contests, {"million pixels a second", 1e6, true});
}
