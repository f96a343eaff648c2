#ifndef KOVANTA_TESTS_VIDEOOUT_OUTPUTFOLDER_H
#define KOVANTA_TESTS_VIDEOOUT_OUTPUTFOLDER_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

/// A folder of its own for each test, gone afterwards.
class OutputFolder : public testing::Test {
protected:
    OutputFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kovanta-out-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make " + name);
        folder = name;
    }
    ~OutputFolder() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string path(const std::string& name) const { return (folder / name).string(); }

    std::filesystem::path folder;
};

#endif
