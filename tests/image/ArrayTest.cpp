// SPDX-License-Identifier: BSD-2-Clause
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace {

using Array = Ko::Array2D<unsigned char>;
using test::thrownText;

/// A noalloc array over memory of its own, with the sample at (x, y) being 10 * y + x.
struct Wrapped {
    Wrapped(unsigned w, unsigned h)
        : memory(std::size_t{w} * h) {
        array.newData(w, h, false);
        array.subarrays = {{w, h, 0, 0}};
        array.view = array.rows;
        for (unsigned y = 0; y < h; ++y)
            array.rows[y] = memory.data() + y * w;
        for (unsigned i = 0; i < w * h; ++i)
            memory[i] = static_cast<unsigned char>(10 * (i / w) + i % w);
    }
    std::vector<unsigned char> memory;
    Array array;
};

bool isDefault(const Array& a) {
    const auto& areas = a.subarrays;
    return a.width == 0 && a.height == 0 && !a.rows && !a.view && !a.data && a.alloc && areas.size() == 1 &&
           areas[0].width + areas[0].height + areas[0].x0 + areas[0].y0 == 0;
}

TEST(Array2D, RowsAreDenseAndTheViewIsWhole) {
    Array a;
    EXPECT_TRUE(isDefault(a));
    for (const auto& [w, h] : {std::pair{640u, 480u}, {480u, 640u}, {5u, 3u}}) {
        a.resize(w, h);
        const unsigned char* before = a.data;
        test::beginAt(a, 1, 1);
        std::swap(a.rows[1], a.rows[2]); // a resize takes back both
        a.resize(w, h);
        EXPECT_EQ(a.data, before);
        for (unsigned y = 0; y < h; ++y)
            ASSERT_EQ(a.view[y], a.data + y * w);
        EXPECT_EQ(a.view, a.rows);
        ASSERT_EQ(a.subarrays.size(), 1u);
        EXPECT_EQ(a.subarrays[0].width, w);
        EXPECT_EQ(a.subarrays[0].height, h);
    }
}

TEST(Array2D, ViewsStackLikeAVector) {
    using View = Array::Subarray;
    Ko::ViewStack<View> views;
    for (unsigned i = 1; i <= 3; ++i)
        views.push_back({i, 0, 0, 0});
    const std::vector<View> all = views;
    Ko::ViewStack<View> copy = all;
    const Ko::ViewStack<View> moved = std::move(views);
    EXPECT_EQ(std::pair(views.size(), views.back().width), std::pair(std::size_t{1}, 0u)); // NOLINT
    ASSERT_EQ(moved.size(), 4u);
    for (unsigned i = 3; i > 0; --i) {
        EXPECT_EQ(std::pair(copy.back().width, copy.size()), std::pair(i, std::size_t{i} + 1));
        EXPECT_EQ(moved[i].width, i);
        copy.pop_back();
    }
    EXPECT_EQ(copy.back().width, 0u);
    copy.push_back(copy.back());
    copy.clear();
    EXPECT_TRUE(copy.empty() && copy.begin() == copy.end());
    copy = {{7, 0, 0, 0}, {8, 0, 0, 0}};
    copy = Ko::ViewStack<View>{{9, 0, 0, 0}};
    EXPECT_EQ(copy.front().width, 9u);
}

TEST(Array2D, ZeroDimensionReleasesAndKeepsTheRecordedSize) {
    Array a;
    a.resize(5, 3);
    a.newData(0, 9, false);
    EXPECT_TRUE(!a.rows && !a.data && a.alloc);
    a.resize(7, 0);
    EXPECT_EQ(a.view, nullptr);
    EXPECT_EQ(a.subarrays[0].width, 5u);

    const Array copy(a); // has a size but no rows to copy from
    Array assigned;
    assigned = a;
    for (const Array* array : {&std::as_const(a), &copy, &std::as_const(assigned)})
        EXPECT_EQ(std::pair(array->width, array->height), std::pair(5u, 3u));
}

TEST(Array2D, NoallocResizeRefusesOnlyWhenBothDimensionsDiffer) {
    Wrapped w(8, 6);
    unsigned char* const* rows = w.array.rows;
    w.array.resize(8, 3);
    w.array.resize(4, 6);
    w.array.resize(8, 6);
    for (const auto& [width, height] : {std::pair{4u, 3u}, {0xFFFFFFFF, 0xFFFFFFFF}})
        EXPECT_EQ(thrownText<std::logic_error>([&, x = width, y = height] { w.array.resize(x, y); }),
                  "[Array2D<T>::resize]: Noalloc and trying to resize.");
    EXPECT_EQ(w.array.rows, rows);
    EXPECT_EQ(w.array.width, 8u);
    EXPECT_EQ(w.array.view[2], w.memory.data() + 16);
}

TEST(Array2D, CopiesOwnTheirSamplesAndKeepTheView) {
    Wrapped w(8, 6);
    test::beginAt(w.array, 2, 1);

    const Array copy(w.array);
    EXPECT_TRUE(copy.alloc);
    ASSERT_EQ(copy.subarrays.size(), 2u);
    EXPECT_EQ(copy.view[0][0], 12); // row 1, column 2
    EXPECT_EQ(copy.view[2][5], 37);
    EXPECT_EQ(copy.data[0], 0); // what lies left of the view is copied too
    EXPECT_EQ(copy.rows[0], copy.data + 2);

    Array assigned;
    assigned.resize(100, 100);
    assigned = w.array;
    EXPECT_EQ(assigned.view[1][1], 23);

    // Into wrapped memory of the same size, again and again: the shift must not add up.
    Wrapped target(8, 6);
    std::fill(target.memory.begin(), target.memory.end(), static_cast<unsigned char>(0));
    for (int i = 0; i < 3; ++i)
        target.array = assigned;
    EXPECT_FALSE(target.array.alloc);
    EXPECT_EQ(target.memory, w.memory);
    EXPECT_EQ(target.array.view[0][0], 12);
    EXPECT_EQ(target.array.rows[0], target.memory.data() + 2);

    Wrapped other(8, 5);
    EXPECT_EQ(thrownText<std::logic_error>([&] { other.array = assigned; }),
              "[Array2D<T>::operator=]: Noalloc and trying to resize.");
    EXPECT_EQ(other.array.subarrays.size(), 1u);

    auto& self = assigned;
    assigned = self;
    EXPECT_EQ(assigned.view[1][1], 23);
}

TEST(Array2D, MovesHandOverStorageOrWrapping) {
    Wrapped w(8, 6);
    Array owning(w.array);
    const unsigned char* samples = owning.data;
    Array taken(std::move(owning));
    EXPECT_EQ(taken.data, samples);
    EXPECT_TRUE(isDefault(owning)); // NOLINT(bugprone-use-after-move)

    Array wrapping(std::move(w.array));
    EXPECT_FALSE(wrapping.alloc);
    EXPECT_EQ(wrapping.rows[1], w.memory.data() + 8);

    Array target;
    target.resize(2, 2);
    target = std::move(taken);
    EXPECT_EQ(target.data, samples);
    EXPECT_TRUE(isDefault(taken)); // NOLINT(bugprone-use-after-move)

    // A wrapping target keeps its memory and takes the samples.
    Wrapped window(8, 6);
    target.view[0][0] = 99;
    window.array = std::move(target);
    EXPECT_EQ(window.memory[0], 99);
    EXPECT_FALSE(window.array.alloc);
}

TEST(Array2D, WhatDoesNotFitIsRefusedUnchanged) {
    Array a;
    a.resize(3, 2);
    const unsigned char* before = a.data;
    EXPECT_EQ(thrownText<std::runtime_error>([&] { a.resize(65536, 65536); }),
              "[Array2D<T>::resize]: Image too large.");
    EXPECT_EQ(thrownText<std::runtime_error>([&] { a.newData(0xFFFFFFFF, 2, false); }),
              "[Array2D<T>::newData]: Image too large.");
    EXPECT_EQ(a.data, before);
    EXPECT_EQ(a.width, 3u);
}

} // namespace
