#ifndef KOVANTA_SRC_IMAGEFILE_FILE_H
#define KOVANTA_SRC_IMAGEFILE_FILE_H

#include <cstdio>
#include <memory>
#include <string>

namespace Ko {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open stdio file.
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for one of the readers or writers, which is named in the refusal.
/// @throws std::runtime_error "[function]: Cannot open NAME: REASON."
FilePtr openFile(const char* function, const std::string& name, const char* mode);

/// The refusal itself, with the reason that @p error (an errno value) stands for.
[[noreturn]] void throwCannotOpen(const char* function, const std::string& name, int error);

} // namespace Ko

#endif
