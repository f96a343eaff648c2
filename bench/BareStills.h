// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_BENCH_BARESTILLS_H
#define KOVANTA_BENCH_BARESTILLS_H

#include <string>
#include <vector>

namespace bench {

/// Pixels as the bare library calls exchange them: three bytes each, rows without padding.
struct BarePicture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<unsigned char> bytes;

    /// Keeps its memory from one picture to the next of that size.
    void size(unsigned w, unsigned h);
    /// One pointer per row.
    unsigned char** rows();

private:
    std::vector<unsigned char*> table;
};

/// The fewest calls that do the job, on stdio files; they end the program on an error.
void readBarePixmap(BarePicture& picture, const std::string& name);
void writeBarePixmap(const std::string& name, const BarePicture& picture);
void readBareJpeg(BarePicture& picture, const std::string& name);
void writeBareJpeg(const std::string& name, BarePicture& picture);
void readBarePng(BarePicture& picture, const std::string& name);
void writeBarePng(const std::string& name, BarePicture& picture);

} // namespace bench

#endif
