// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_FILE_H
#define KOVANTA_SRC_IMAGEFILE_FILE_H

#include "util/Descriptor.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace Ko {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open stdio file.
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for one of the readers, which is named in the refusal.
/// @throws std::runtime_error "[function]: Cannot open NAME: REASON."
Descriptor openForReading(const char* function, const std::string& name);
/// The same for libraries that read from stdio.
FilePtr openFile(const char* function, const std::string& name);

/// A file being written. What it held before stays until truncate(), so that a writer can first make sure that it has
/// something to write. Every failed write is told, also one that only closing the file brings to light.
class OutputFile {
public:
    /// @param function the writer, named in all refusals
    /// @throws std::runtime_error "[function]: Cannot open NAME: REASON."
    OutputFile(const char* function, const std::string& name);

    /// Empties the file, before the first write(). Devices and pipes have nothing to empty.
    void truncate();
    /// Nothing is thrown, since libraries of C call this: the first failure is remembered, and all after it fail too.
    /// @return false after a failure
    bool write(const void* bytes, std::size_t size) noexcept;
    bool flush() noexcept;
    /// Closes the file, when all is written.
    /// @throws std::runtime_error "[function]: Cannot write NAME: REASON." after any failure
    void close();

private:
    bool note(bool done) noexcept;

    const char* function;
    const std::string& name; // the caller's, who waits
    FilePtr file;
    int error = 0; // errno of the first failure
};

} // namespace Ko

#endif
