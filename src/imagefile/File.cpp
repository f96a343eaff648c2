#include "imagefile/File.h"

#include "util/Errors.h"

#include <sys/stat.h>

#include <cerrno>

namespace Ko {

FilePtr openFile(const char* function, const std::string& name, const char* mode) {
    FilePtr file(std::fopen(name.c_str(), mode));
    if (!file)
        throwCannotOpen(function, name, errno);
    // Linux opens a directory for reading and fails only later, which no library reports well.
    struct stat status {};
    if (fstat(fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode))
        throwCannotOpen(function, name, EISDIR);
    return file;
}

void throwCannotOpen(const char* function, const std::string& name, int error) {
    throwRuntimeError(function, "Cannot open " + name, error);
}

} // namespace Ko
