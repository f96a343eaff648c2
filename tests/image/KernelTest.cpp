// SPDX-License-Identifier: BSD-2-Clause
// Every level of the row kernels against the portable ones, byte for byte.
#include "Kovanta/ConvertIm.h"
#include "Kovanta/Wrap.h"
#include "image/kernels/KernelLevels.h"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Ko::KernelLevel;
using Ko::RowKernels;
using Byte = unsigned char;

using MatrixOf = RowKernels::Matrix RowKernels::*;
constexpr MatrixOf matrices[] = {&RowKernels::bt601, &RowKernels::bt709, &RowKernels::bt2020};

constexpr std::size_t longest = 2200;
constexpr KernelLevel fromTheSlowest[] = {KernelLevel::sse4, KernelLevel::avx2, KernelLevel::avxVnni,
                                          KernelLevel::avx512};

/// Memory between two pages that must not be touched.
class FencedBytes {
public:
    FencedBytes()
        : all(static_cast<Byte*>(
              mmap(nullptr, size + 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        if (all == MAP_FAILED || mprotect(all, page, PROT_NONE) || mprotect(end(), page, PROT_NONE))
            throw std::bad_alloc();
    }
    ~FencedBytes() { munmap(all, size + 2 * page); }
    FencedBytes(const FencedBytes&) = delete;
    FencedBytes& operator=(const FencedBytes&) = delete;
    Byte* begin() const { return all + page; }
    Byte* end() const { return begin() + size; }

    static constexpr std::size_t page = 4096;
    static constexpr std::size_t size = 3 * page;

private:
    Byte* all;
};
static_assert(4 * longest + 128 <= FencedBytes::size, "the widest row fits");

/// A level, and whether it writes past the cache.
class KernelLevels : public testing::TestWithParam<std::tuple<KernelLevel, bool>> {
protected:
    void SetUp() override {
        if (!Ko::kernelsOf(level()))
            GTEST_SKIP() << "this processor does not have the level";
        for (std::size_t n = 0; n <= 130; ++n)
            sizes.push_back(n);
        for (auto* all : {sourceRows, wantedRows})
            for (std::size_t i = 0; i < 4; ++i)
                for (Byte& b : all[i]) {
                    const auto r = random();
                    b = r % 8 == 0 ? Byte{0} : r % 8 == 1 ? Byte{255} : static_cast<Byte>(r >> 8);
                }
    }
    static KernelLevel level() { return std::get<0>(GetParam()); }
    static const RowKernels& fast() {
        const auto* both = Ko::kernelsOf(level());
        return std::get<1>(GetParam()) ? both->streaming : both->cached;
    }

    /// @param kernel a member of the kernels, or what finds it among them
    /// @param bytes what one of its n takes in each row
    template <class Kernel>
    void compare(const char* name, Kernel kernel, const std::vector<std::size_t>& bytes) {
        ++compared;
        compareTwo(name, std::invoke(kernel, Ko::portableKernels.cached), std::invoke(kernel, fast()), bytes);
    }

    /// A kernel takes rows to write, then rows to read, then n, then the depth or the scale.
    template <class... P>
    void compareTwo(const char* name, void (*defined)(P...), void (*kernel)(P...),
                    const std::vector<std::size_t>& bytes) {
        constexpr std::size_t targets = (std::is_same_v<P, Byte*> + ...);
        for (const std::size_t n : sizes)
            for (const int place : {0, 1, 7, 32, ~0, ~13, ~63}) { // from the fence in front, or before the one behind
                const auto distance = static_cast<std::size_t>(place >= 0 ? place : ~place);
                Byte* wanted[sizeof...(P)] = {};
                Byte* written[sizeof...(P)] = {};
                for (std::size_t i = 0; i < bytes.size(); ++i) {
                    const std::size_t at = place >= 0 ? distance : FencedBytes::size - distance - n * bytes[i];
                    if (i >= targets) {
                        wanted[i] = written[i] = sourceRows[i - targets].begin() + at;
                        continue;
                    }
                    for (Byte& b : wantedRows[i])
                        b = static_cast<Byte>(~b); // what an earlier run left must not look like a result of this one
                    std::copy(wantedRows[i].begin(), wantedRows[i].end(), gotRows[i].begin());
                    wanted[i] = wantedRows[i].begin() + at;
                    written[i] = gotRows[i].begin() + at;
                }
                run(defined, wanted, n, std::index_sequence_for<P...>());
                run(kernel, written, n, std::index_sequence_for<P...>());
                for (std::size_t i = 0; i < targets; ++i)
                    ASSERT_TRUE(std::equal(wantedRows[i].begin(), wantedRows[i].end(), gotRows[i].begin()))
                        << name << " target " << i << " n " << n << " place " << place;
            }
    }

    std::size_t compared = 0;

private:
    static constexpr int tenBits = 10;
    static constexpr Ko::WordScale lumaOfWords{6, tenBits, 219, 511, 16};

    template <class... P, std::size_t... i>
    static void run(void (*kernel)(P...), Byte* const* rows, std::size_t n, std::index_sequence<i...>) {
        const auto argument = [&](auto* parameter, std::size_t index) {
            if constexpr (std::is_same_v<decltype(parameter), std::size_t*>)
                return n;
            else if constexpr (std::is_same_v<decltype(parameter), int*>)
                return tenBits;
            else if constexpr (std::is_same_v<decltype(parameter), Ko::WordScale*>)
                return lumaOfWords;
            else
                return rows[index];
        };
        kernel(argument(static_cast<P*>(nullptr), i)...);
    }

    std::vector<std::size_t> sizes = {255, 256, 1023, 1024, 1025, 1087, longest};
    std::mt19937 random{7};
    FencedBytes sourceRows[4], wantedRows[4], gotRows[4];
};

TEST_P(KernelLevels, GiveTheSameBytesAndTouchNothingElse) {
    for (const MatrixOf matrix : matrices) {
        compare("rgbToYcc", [matrix](const RowKernels& k) { return (k.*matrix).rgbToYcc; }, {1, 1, 1, 3});
        compare("rgbxToYcc", [matrix](const RowKernels& k) { return (k.*matrix).rgbxToYcc; }, {1, 1, 1, 4});
        compare("yccToRgb", [matrix](const RowKernels& k) { return (k.*matrix).yccToRgb; }, {3, 1, 1, 1});
    }
    compare("bgrToYcc", &RowKernels::bgrToYcc, {1, 1, 1, 3});
    compare("rgbaToYcca", &RowKernels::rgbaToYcca, {1, 1, 1, 1, 4});
    compare("lumaToStudio", &RowKernels::lumaToStudio, {1, 1});
    compare("lumaToFull", &RowKernels::lumaToFull, {1, 1});
    compare("jfifToYcc", &RowKernels::jfifToYcc, {1, 1, 1, 3});
    compare("yccToJfif", &RowKernels::yccToJfif, {3, 1, 1, 1});
    compare("chromaToStudioDoubled", &RowKernels::chromaToStudioDoubled, {2, 1});
    compare("meanOfBlocks", &RowKernels::meanOfBlocks, {1, 2, 2});
    compare("meanOfBlocksTruncated", &RowKernels::meanOfBlocksTruncated, {1, 2, 2});
    compare("doubled", &RowKernels::doubled, {2, 2, 1});
    compare("yuy2ToYcc", &RowKernels::yuy2ToYcc, {2, 2, 2, 4});
    compare("yccToYuy2", &RowKernels::yccToYuy2, {4, 2, 2, 2});
    compare("mirrorBytes", &RowKernels::mirrorBytes, {1, 1});
    compare("mirrorTriples", &RowKernels::mirrorTriples, {3, 3});
    compare("mirrorBytesInPlace", &RowKernels::mirrorBytesInPlace, {1});
    compare("mirrorTriplesInPlace", &RowKernels::mirrorTriplesInPlace, {3});
    compare("swapRows", &RowKernels::swapRows, {1, 1});
    compare("copyRow", &RowKernels::copyRow, {1, 1});
    EXPECT_EQ(compared, sizeof(RowKernels) / sizeof(void (*)())) << "a kernel is not compared";
}

TEST_P(KernelLevels, GiveTheSameBytesOfStoredSamples) {
    const Ko::SampleKernels& defined = Ko::portableKernels.samples;
    const Ko::SampleKernels& kernels = Ko::kernelsOf(level())->samples;
    compareTwo("roundWords", defined.roundWords, kernels.roundWords, {1, 2});
    compareTwo("scaleWords", defined.scaleWords, kernels.scaleWords, {1, 2});
    compareTwo("chromaToStudio", defined.chromaToStudio, kernels.chromaToStudio, {1, 1});
    compareTwo("firstOfPairs", defined.firstOfPairs, kernels.firstOfPairs, {1, 2});
    compareTwo("secondOfPairs", defined.secondOfPairs, kernels.secondOfPairs, {1, 2});
    compareTwo("separatePairs", defined.separatePairs, kernels.separatePairs, {1, 1, 2});
    compareTwo("repeated", defined.repeated, kernels.repeated, {2, 1});
    compareTwo("meanOfRows", defined.meanOfRows, kernels.meanOfRows, {1, 1, 1});
    compareTwo("bgrxToYcc", defined.bgrxToYcc, kernels.bgrxToYcc, {1, 1, 1, 4});
    compareTwo("planesToRgbx", defined.planesToRgbx, kernels.planesToRgbx, {4, 1, 1, 1});
    static_assert(sizeof(Ko::SampleKernels) == 10 * sizeof(void (*)()), "a kernel is not compared");

    constexpr std::size_t n = 1 << 16;
    std::vector<Byte> words(2 * n), wanted(n), written(n);
    for (std::size_t i = 0; i < 2 * n; ++i)
        words[i] = static_cast<Byte>(i / 2 >> i % 2 * 8);
    for (int depth = 9; depth <= 16; ++depth) {
        defined.roundWords(wanted.data(), words.data(), n, depth);
        kernels.roundWords(written.data(), words.data(), n, depth);
        ASSERT_EQ(wanted, written) << depth;
        const int half = ((1 << depth) - 1) / 2;
        for (const Ko::WordScale scale : {Ko::WordScale{0, depth, 219, half, 16},
                                          {16 - depth, depth, 224, half - 112, 16},
                                          {0, depth, 255, half, 0}}) {
            defined.scaleWords(wanted.data(), words.data(), n, scale);
            kernels.scaleWords(written.data(), words.data(), n, scale);
            ASSERT_EQ(wanted, written) << depth << " bits times " << scale.span;
        }
    }
}

/// Every conversion, with source and target over the same bytes from another column on: one sample after the other.
TEST_P(KernelLevels, ConvertWithinTheSameMemoryAsThePortableOnes) {
    const KernelLevel levels[] = {KernelLevel::portable, level()};
    for (unsigned to = Ko::PF_YCC444P; to <= Ko::PF_YUY2; ++to)
        for (unsigned from = Ko::PF_YCC444P; from <= Ko::PF_YUY2; ++from)
            for (const std::ptrdiff_t shift : {0, 1, 5, -3, 70}) {
                const auto target = static_cast<Ko::PIXEL_FORMAT>(to);
                const auto source = static_cast<Ko::PIXEL_FORMAT>(from);
                if (to == from || !Ko::canConvert(source, target))
                    continue;
                std::vector<Byte> results[2];
                for (int i = 0; i < 2; ++i) {
                    ASSERT_TRUE(Ko::useKernels(levels[i]));
                    std::vector<Byte>& bytes = results[i];
                    for (unsigned b = 0; b < 20000; ++b)
                        bytes.push_back(static_cast<Byte>(b * b / 7));
                    const auto wrap = [&](Ko::PIXEL_FORMAT format, Byte* first) {
                        Ko::Image sized(format);
                        sized.size(102, 6);
                        Ko::PlaneMemory planes[4];
                        for (int p = 0; p < 4; ++p)
                            if (sized.plane[p].rows)
                                planes[p] = {first + 4000 * p, 500};
                        return Ko::wrapMemory(format, 102, 6, planes);
                    };
                    Ko::Image dst = wrap(target, &bytes[100] + shift);
                    Ko::convertIm(dst, wrap(source, &bytes[100]));
                }
                EXPECT_EQ(results[0], results[1]) << fmt2string(source) << " to " << fmt2string(target) << shift;
            }
}

TEST_P(KernelLevels, ComputeEveryMatrixForAllTriples) {
    constexpr std::size_t n = 1 << 16;
    std::vector<Byte> planes(3 * n), packed(3 * n), wanted(3 * n), written(3 * n);
    for (int v = 0; v < 256; ++v) {
        for (std::size_t i = 0; i < n; ++i) {
            const Byte triple[] = {static_cast<Byte>(v), static_cast<Byte>(i >> 8), static_cast<Byte>(i)};
            for (std::size_t p = 0; p < 3; ++p)
                planes[p * n + i] = packed[3 * i + p] = triple[p];
        }
        for (const MatrixOf matrix : matrices) {
            const RowKernels::Matrix& defined = Ko::portableKernels.cached.*matrix;
            const RowKernels::Matrix& kernels = fast().*matrix;
            defined.rgbToYcc(&wanted[0], &wanted[n], &wanted[2 * n], packed.data(), n);
            kernels.rgbToYcc(&written[0], &written[n], &written[2 * n], packed.data(), n);
            ASSERT_EQ(wanted, written) << "R " << v;
            defined.yccToRgb(wanted.data(), &planes[0], &planes[n], &planes[2 * n], n);
            kernels.yccToRgb(written.data(), &planes[0], &planes[n], &planes[2 * n], n);
            ASSERT_EQ(wanted, written) << "Y' " << v;
        }
    }
}

TEST_P(KernelLevels, CanBeForced) {
    const RowKernels* best = &Ko::rowKernels();
    ASSERT_TRUE(Ko::useKernels(level()));
    EXPECT_EQ(std::get<1>(GetParam()) ? &Ko::streamingKernels() : &Ko::rowKernels(), &fast());
    ASSERT_TRUE(Ko::useKernels(KernelLevel::portable));
    EXPECT_EQ(&Ko::rowKernels(), &Ko::portableKernels.cached);
    for (const KernelLevel each : fromTheSlowest)
        Ko::useKernels(each); // the last one that the processor has stays
    EXPECT_EQ(&Ko::rowKernels(), best) << "the best level was not chosen";
}

/// Rows that follow one another are converted and copied as one; others are looked for where the table has them.
TEST(RowTables, AreObeyedRowByRow) {
    Ko::Image src(Ko::PF_RGB), before(Ko::PF_YCC444P), after(Ko::PF_YCC444P);
    src.size(8, 6);
    for (unsigned i = 0; i < 8 * 6 * 3; ++i)
        src.plane[0].data[i] = static_cast<Byte>(i * i);
    Ko::convertIm(before, src);
    std::swap(src.plane[0].rows[2], src.plane[0].rows[3]);
    Ko::convertIm(after, src);
    const Ko::Image copy = src;
    for (unsigned y = 0; y < 6; ++y) {
        EXPECT_TRUE(std::equal(after.plane[2].row(y), after.plane[2].row(y) + 8, before.plane[2].row(y ^ (y / 2 == 1))))
            << y;
        EXPECT_TRUE(std::equal(copy.plane[0].row(y), copy.plane[0].row(y) + 8 * 3, src.plane[0].row(y))) << y;
    }
}

constexpr const char* names[] = {"portable", "sse4", "avx2", "avxVnni", "avx512"};
INSTANTIATE_TEST_SUITE_P(All, KernelLevels,
                         testing::Combine(testing::ValuesIn(fromTheSlowest), testing::Values(false, true)),
                         [](const auto& test) {
                             return std::string(names[static_cast<int>(std::get<0>(test.param))]) +
                                    (std::get<1>(test.param) ? "Streaming" : "");
                         });

} // namespace
