// SPDX-License-Identifier: BSD-2-Clause
// Text into a 1080p frame: from the cache of glyphs, against OpenCV's antialiased putText and against FreeType
// rendering each glyph anew. Counted in glyphs. Arguments are those of Google Benchmark, and --table=FILE.
#include "Contest.h"

#include "Kovanta/Font.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#ifdef BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace bench;

const std::string text = "Frame 1234, 0:49.36: box 117 x 64, moving";
constexpr Ko::Point<int> pen{20, 300};
constexpr Ko::YCCColor white{235, 128, 128};

/// The same picture as drawText() makes, without a cache.
class Anew {
public:
    explicit Anew(unsigned int size) {
        if (FT_Init_FreeType(&library) != 0 ||
            FT_New_Memory_Face(library, luximr_ttf, static_cast<FT_Long>(luximr_ttf_size), 0, &face) != 0 ||
            FT_Set_Pixel_Sizes(face, size, 0) != 0)
            std::abort();
    }
    Anew(const Anew&) = delete;
    Anew& operator=(const Anew&) = delete;
    ~Anew() { FT_Done_FreeType(library); }

    void draw(Ko::Image<>& im) {
        long x = pen.x;
        for (const char c : text) {
            if (FT_Load_Char(face, static_cast<FT_ULong>(c), FT_LOAD_RENDER) != 0)
                std::abort();
            const FT_GlyphSlot slot = face->glyph;
            for (unsigned int row = 0; row < slot->bitmap.rows; ++row)
                for (int p = 0; p < 3; ++p) {
                    const int color = p == 0 ? white.y : 128;
                    unsigned char* to =
                        im.plane[p].view[pen.y - slot->bitmap_top + static_cast<int>(row)] + x + slot->bitmap_left;
                    const unsigned char* coverage = slot->bitmap.buffer + row * slot->bitmap.width;
                    for (unsigned int column = 0; column < slot->bitmap.width; ++column)
                        to[column] = static_cast<unsigned char>(
                            ((256 - coverage[column]) * to[column] + coverage[column] * color) >> 8);
                }
            x += (slot->advance.x + 32) >> 6;
        }
    }

private:
    FT_Library library = nullptr;
    FT_Face face = nullptr;
};

/// One size of text and all that draws it.
struct Case {
    Ko::Image<> frame{Ko::PF_YCC444P};
    Ko::Font font;
    Anew anew;
#ifdef BENCH_OPENCV
    cv::Mat bgr{1080, 1920, CV_8UC3, cv::Scalar(30, 30, 30)};
    double scale;
#endif

    explicit Case(unsigned int size)
        : anew(size) {
        frame.size(1920, 1080);
        for (int p = 0; p < 3; ++p)
            for (unsigned int y = 0; y < 1080; ++y)
                std::fill_n(frame.plane[p].view[y], 1920, static_cast<unsigned char>(60));
        font.init(nullptr, 0, size);
#ifdef BENCH_OPENCV
        // As wide as ours: 0.6 of the size a glyph.
        int baseline = 0;
        const double wanted = 0.6 * size * static_cast<double>(text.size());
        scale = wanted / cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, 1, 1, &baseline).width;
#endif
    }
};

bool same(const Ko::Image<>& a, const Ko::Image<>& b) {
    for (int p = 0; p < 3; ++p)
        for (unsigned int y = 0; y < a.height; ++y)
            if (!std::equal(a.plane[p].view[y], a.plane[p].view[y] + a.width, b.plane[p].view[y]))
                return false;
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::deque<Case> cases;
    std::vector<Contest> contests;
    for (const unsigned int size : {12u, 20u, 40u}) {
        Case& c = cases.emplace_back(size);
        Ko::Image<> cached(c.frame);
        Ko::Image<> rendered(c.frame);
        c.font.drawText(cached, text, pen, white);
        c.anew.draw(rendered);
        if (!same(cached, rendered)) {
            std::cerr << "The cache does not draw what FreeType renders anew.\n";
            return 1;
        }
        Contest contest{"text of " + std::to_string(size) + " pixels", static_cast<double>(text.size()), {}};
        contest.contenders.push_back({"ours", Side::ours, [&c] {
                                          c.font.drawText(c.frame, text, pen, white);
                                      }});
        contest.contenders.push_back({"FreeType anew", Side::peer, [&c] {
                                          c.anew.draw(c.frame);
                                      }});
#ifdef BENCH_OPENCV
        contest.contenders.push_back({"OpenCV putText", Side::peer, [&c] {
                                          cv::putText(c.bgr, text, {pen.x, pen.y}, cv::FONT_HERSHEY_SIMPLEX, c.scale,
                                                      cv::Scalar(235, 235, 235), 1, cv::LINE_AA);
                                      }});
#endif
        contests.push_back(std::move(contest));
    }
    return runContests(argc, argv, contests, {"million glyphs/s", 1e6, true});
}
