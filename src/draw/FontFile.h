// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_DRAW_FONTFILE_H
#define KOVANTA_SRC_DRAW_FONTFILE_H

#include <memory>
#include <string>

namespace Ko {

/// The bytes of a font file. FreeType would map the file, and die with the process when somebody shortens it.
struct FontFile {
    /// No bytes where the name is no regular file that can be read, is empty or passes 1 GiB, which no font does.
    /// @throws std::bad_alloc
    explicit FontFile(const std::string& name);

    std::unique_ptr<unsigned char[]> bytes;
    unsigned long size = 0;
};

} // namespace Ko

#endif
