// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_SRC_IMAGEFILE_FILE_H
#define KOVANTA_SRC_IMAGEFILE_FILE_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace Ko {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open stdio file.
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for one of the readers, which is named in the refusal.
/// @throws std::runtime_error "[function]: Cannot open NAME: REASON."
FilePtr openFile(const char* function, const std::string& name);
/// The same for a file's bytes, which must outlive it.
/// @throws std::bad_alloc
FilePtr openMemory(const void* data, std::size_t size);

/// A file being written, or the bytes of one in memory. What it held before stays until truncate(), so that a writer
/// can first make sure that it has something to write. Every failed write is told, also one that only closing the file
/// brings to light.
class OutputFile {
public:
    /// @param function the writer, named in all refusals
    /// @throws std::runtime_error "[function]: Cannot open NAME: REASON."
    OutputFile(const char* function, const std::string& name);
    /// Appends to @p memory.
    OutputFile(const char* function, std::vector<unsigned char>& memory);

    /// Empties the file, before the first write(). Devices and pipes have nothing to empty.
    void truncate();
    /// Nothing is thrown, since libraries of C call this: the first failure is remembered, and all after it fail too.
    /// @return false after a failure
    bool write(const void* bytes, std::size_t size) noexcept;
    bool flush() noexcept;
    /// Closes the file, when all is written.
    /// @throws std::runtime_error "[function]: Cannot write NAME: REASON." after any failure; of memory, std::bad_alloc
    void close();

private:
    bool note(bool done) noexcept;
    bool append(const void* bytes, std::size_t size) noexcept;

    const char* function;
    const std::string* name = nullptr; // the caller's, who waits
    FilePtr file;
    std::vector<unsigned char>* memory = nullptr; // instead of a file
    int error = 0;                                // errno of the first failure
};

} // namespace Ko

#endif
