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

/// A test's name from any text: what Google Test does not take becomes an underscore.
inline std::string testName(std::string text) {
    for (char& c : text)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return text;
}

/// Names the rows of a table for INSTANTIATE_TEST_SUITE_P.
constexpr auto rowName = [](const auto& info) {
    return testName(info.param.row);
};

} // namespace test

#endif
