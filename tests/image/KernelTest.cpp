// Every level of the row kernels against the portable ones, byte for byte.
#include "Kovanta/ConvertIm.h"
#include "Kovanta/Wrap.h"
#include "image/kernels/KernelLevels.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Ko::KernelLevel;
using Ko::RowKernels;
using Byte = unsigned char;
using Targets = std::vector<Byte*>;
using Sources = std::vector<const Byte*>;

/// A kernel with the bytes that one of its n takes in each row.
struct Kernel {
    const char* name;
    std::vector<std::size_t> targetBytes;
    std::vector<std::size_t> sourceBytes;
    void (*run)(const RowKernels& k, const Targets& d, const Sources& s, std::size_t n);
};

#define ARGS const RowKernels &k, const Targets &d, const Sources &s, std::size_t n
#define ONE_TO_THREE(name)                                                                                             \
    [](ARGS) {                                                                                                         \
        k.name(d[0], d[1], d[2], s[0], n);                                                                             \
    }
#define THREE_TO_ONE(name)                                                                                             \
    [](ARGS) {                                                                                                         \
        k.name(d[0], s[0], s[1], s[2], n);                                                                             \
    }
#define ONE_TO_ONE(name)                                                                                               \
    [](ARGS) {                                                                                                         \
        k.name(d[0], s[0], n);                                                                                         \
    }
#define TWO_TO_ONE(name)                                                                                               \
    [](ARGS) {                                                                                                         \
        k.name(d[0], s[0], s[1], n);                                                                                   \
    }
#define IN_PLACE(name)                                                                                                 \
    [](const RowKernels& k, const Targets& d, const Sources&, std::size_t n) {                                         \
        k.name(d[0], n);                                                                                               \
    }

const std::vector<Kernel>& kernels() {
    static const std::vector<Kernel> all = {
        {"rgbToYcc", {1, 1, 1}, {3}, ONE_TO_THREE(rgbToYcc)},
        {"bgrToYcc", {1, 1, 1}, {3}, ONE_TO_THREE(bgrToYcc)},
        {"rgbxToYcc", {1, 1, 1}, {4}, ONE_TO_THREE(rgbxToYcc)},
        {"rgbaToYcca",
         {1, 1, 1, 1},
         {4},
         [](ARGS) {
             k.rgbaToYcca(d[0], d[1], d[2], d[3], s[0], n);
         }},
        {"yccToRgb", {3}, {1, 1, 1}, THREE_TO_ONE(yccToRgb)},
        {"lumaToStudio", {1}, {1}, ONE_TO_ONE(lumaToStudio)},
        {"lumaToFull", {1}, {1}, ONE_TO_ONE(lumaToFull)},
        {"jfifToYcc", {1, 1, 1}, {3}, ONE_TO_THREE(jfifToYcc)},
        {"yccToJfif", {3}, {1, 1, 1}, THREE_TO_ONE(yccToJfif)},
        {"chromaToStudioDoubled", {2}, {1}, ONE_TO_ONE(chromaToStudioDoubled)},
        {"meanOfBlocks", {1}, {2, 2}, TWO_TO_ONE(meanOfBlocks)},
        {"meanOfBlocksTruncated", {1}, {2, 2}, TWO_TO_ONE(meanOfBlocksTruncated)},
        {"doubled", {2}, {1}, ONE_TO_ONE(doubled)},
        {"yuy2ToYcc", {2, 2, 2}, {4}, ONE_TO_THREE(yuy2ToYcc)},
        {"yccToYuy2", {4}, {2, 2, 2}, THREE_TO_ONE(yccToYuy2)},
        {"mirrorBytes", {1}, {1}, ONE_TO_ONE(mirrorBytes)},
        {"mirrorTriples", {3}, {3}, ONE_TO_ONE(mirrorTriples)},
        {"mirrorBytesInPlace", {1}, {}, IN_PLACE(mirrorBytesInPlace)},
        {"mirrorTriplesInPlace", {3}, {}, IN_PLACE(mirrorTriplesInPlace)},
        {"swapRows",
         {1, 1},
         {},
         [](const RowKernels& k, const Targets& d, const Sources&, std::size_t n) {
             k.swapRows(d[0], d[1], n);
         }},
    };
    return all;
}

/// Memory between two pages that must not be touched.
class FencedBytes {
public:
    explicit FencedBytes(std::size_t size)
        : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE)))
        , size_((size + page_ - 1) / page_ * page_) {
        void* all = mmap(nullptr, size_ + 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (all == MAP_FAILED)
            throw std::bad_alloc();
        base_ = static_cast<Byte*>(all);
        mprotect(base_, page_, PROT_NONE);
        mprotect(end(), page_, PROT_NONE);
    }
    ~FencedBytes() { munmap(base_, size_ + 2 * page_); }
    FencedBytes(const FencedBytes&) = delete;
    FencedBytes& operator=(const FencedBytes&) = delete;
    Byte* begin() { return base_ + page_; }
    std::size_t size() const { return size_; }
    Byte* end() { return base_ + page_ + size_; }

private:
    std::size_t page_;
    std::size_t size_;
    Byte* base_;
};

/// Where a row lies: `offset` bytes from the fence in front of it, or before the one behind it.
struct Place {
    bool atEnd;
    std::size_t offset;
};

constexpr std::size_t longest = 2200;
constexpr std::size_t room = 4 * longest + 128;

class KernelLevels : public testing::TestWithParam<KernelLevel> {
protected:
    void SetUp() override {
        if (!Ko::kernelsOf(GetParam()))
            GTEST_SKIP() << "this processor does not have the level";
    }
    const RowKernels& fast() const { return *Ko::kernelsOf(GetParam()); }
};

TEST_P(KernelLevels, GiveTheSameBytesAndTouchNothingElse) {
    std::mt19937 random(7);
    const auto fill = [&](FencedBytes& bytes) {
        for (Byte* b = bytes.begin(); b != bytes.end(); ++b) {
            const auto r = random();
            *b = r % 8 == 0 ? Byte{0} : r % 8 == 1 ? Byte{255} : static_cast<Byte>(r >> 8);
        }
    };
    FencedBytes source[3] = {FencedBytes(room), FencedBytes(room), FencedBytes(room)};
    FencedBytes expected[4] = {FencedBytes(room), FencedBytes(room), FencedBytes(room), FencedBytes(room)};
    FencedBytes got[4] = {FencedBytes(room), FencedBytes(room), FencedBytes(room), FencedBytes(room)};
    for (auto& bytes : source)
        fill(bytes);
    for (auto& bytes : expected)
        fill(bytes);

    std::vector<std::size_t> sizes;
    for (std::size_t n = 0; n <= 130; ++n)
        sizes.push_back(n);
    sizes.insert(sizes.end(), {255, 256, 1023, 1024, 1025, 1087, longest});
    ASSERT_EQ(kernels().size(), sizeof(RowKernels) / sizeof(void (*)())) << "a kernel is not compared";
    const Place places[] = {{false, 0}, {true, 0}, {false, 1}, {false, 7}, {true, 13}, {false, 32}, {true, 63}};

    for (const Kernel& kernel : kernels())
        for (const std::size_t n : sizes)
            for (const Place& place : places) {
                const auto at = [&](FencedBytes& bytes, std::size_t size) {
                    return place.atEnd ? bytes.end() - place.offset - size : bytes.begin() + place.offset;
                };
                Sources sources;
                for (std::size_t i = 0; i < kernel.sourceBytes.size(); ++i)
                    sources.push_back(at(source[i], n * kernel.sourceBytes[i]));
                Targets wanted;
                Targets written;
                for (std::size_t i = 0; i < kernel.targetBytes.size(); ++i) {
                    // What an earlier run left must not look like a result of this one.
                    for (Byte* b = expected[i].begin(); b != expected[i].end(); ++b)
                        *b = static_cast<Byte>(~*b);
                    std::memcpy(got[i].begin(), expected[i].begin(), got[i].size());
                    wanted.push_back(at(expected[i], n * kernel.targetBytes[i]));
                    written.push_back(at(got[i], n * kernel.targetBytes[i]));
                }
                kernel.run(Ko::portableKernels, wanted, sources, n);
                kernel.run(fast(), written, sources, n);
                for (std::size_t i = 0; i < kernel.targetBytes.size(); ++i)
                    ASSERT_EQ(std::memcmp(expected[i].begin(), got[i].begin(), got[i].size()), 0)
                        << kernel.name << " target " << i << " n " << n << (place.atEnd ? " end -" : " begin +")
                        << place.offset;
            }
}

TEST_P(KernelLevels, MapRangesInPlace) {
    for (const auto kernel : {&RowKernels::lumaToStudio, &RowKernels::lumaToFull})
        for (std::size_t n = 0; n <= 260; ++n) {
            std::vector<Byte> expected(n);
            for (std::size_t i = 0; i < n; ++i)
                expected[i] = static_cast<Byte>(7 * i + n);
            std::vector<Byte> got = expected;
            (Ko::portableKernels.*kernel)(expected.data(), expected.data(), n);
            (fast().*kernel)(got.data(), got.data(), n);
            ASSERT_EQ(got, expected) << n;
        }
}

/// Every conversion, with source and target over the same bytes from another column on: one sample after the other.
TEST_P(KernelLevels, ConvertWithinTheSameMemoryAsThePortableOnes) {
    const KernelLevel levels[] = {KernelLevel::portable, GetParam()};
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

TEST_P(KernelLevels, ComputeBothMatricesForAllTriples) {
    constexpr std::size_t n = 1 << 16;
    std::vector<Byte> first(n);
    std::vector<Byte> second(n);
    std::vector<Byte> third(n);
    for (std::size_t i = 0; i < n; ++i) {
        second[i] = static_cast<Byte>(i >> 8);
        third[i] = static_cast<Byte>(i);
    }
    std::vector<Byte> packed(3 * n);
    std::vector<Byte> expected(3 * n);
    std::vector<Byte> got(3 * n);
    for (int v = 0; v < 256; ++v) {
        first.assign(n, static_cast<Byte>(v));
        for (std::size_t i = 0; i < n; ++i) {
            packed[3 * i] = first[i];
            packed[3 * i + 1] = second[i];
            packed[3 * i + 2] = third[i];
        }
        const auto encode = [&](const RowKernels& kernels, std::vector<Byte>& to) {
            kernels.rgbToYcc(&to[0], &to[n], &to[2 * n], packed.data(), n);
        };
        const auto decode = [&](const RowKernels& kernels, std::vector<Byte>& to) {
            kernels.yccToRgb(to.data(), first.data(), second.data(), third.data(), n);
        };
        encode(Ko::portableKernels, expected);
        encode(fast(), got);
        ASSERT_EQ(expected, got) << "R " << v;
        decode(Ko::portableKernels, expected);
        decode(fast(), got);
        ASSERT_EQ(expected, got) << "Y' " << v;
    }
}

TEST_P(KernelLevels, CanBeForced) {
    const RowKernels* best = &Ko::rowKernels();
    ASSERT_TRUE(Ko::useKernels(GetParam()));
    EXPECT_EQ(&Ko::rowKernels(), &fast());
    ASSERT_TRUE(Ko::useKernels(KernelLevel::portable));
    EXPECT_EQ(&Ko::rowKernels(), &Ko::portableKernels);
    for (const KernelLevel level : {KernelLevel::avx2, KernelLevel::avx512})
        Ko::useKernels(level); // the last one that the processor has stays
    EXPECT_EQ(&Ko::rowKernels(), best) << "the best level was not chosen";
}

INSTANTIATE_TEST_SUITE_P(All, KernelLevels, testing::Values(KernelLevel::avx2, KernelLevel::avx512),
                         [](const auto& test) { return test.param == KernelLevel::avx2 ? "avx2" : "avx512"; });

} // namespace
