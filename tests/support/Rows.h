// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_TESTS_SUPPORT_ROWS_H
#define KOVANTA_TESTS_SUPPORT_ROWS_H

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>

// Tables of cases with named columns, for TEST_P: each row is a test of its own.
//
//     struct Container : test::Row {
//         const char* extension;
//         bool countsFrames;
//     };
//     class Containers : public testing::TestWithParam<Container> {};
//     INSTANTIATE_TEST_SUITE_P(All, Containers, testing::Values(Container{{"Avi"}, "avi", true}), test::rowName);
namespace test {

/// The first column of a table: what a row is called, on the command line and in a failure.
struct Row {
    const char* row;
    friend std::ostream& operator<<(std::ostream& stream, const Row& r) { return stream << r.row; }
};

/// Names the rows of a table for INSTANTIATE_TEST_SUITE_P; what Google Test does not take becomes an underscore.
constexpr auto rowName = [](const auto& info) {
    std::string name = info.param.row;
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
};

} // namespace test

#endif
