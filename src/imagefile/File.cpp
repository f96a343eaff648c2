// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/File.h"

#include "util/Errors.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Ko {

namespace {

/// A zero byte would end the message before its reason.
std::string withoutZeros(std::string name) {
    for (std::size_t at = name.find('\0'); at != std::string::npos; at = name.find('\0', at))
        name.replace(at, 1, "\\0");
    return name;
}

Descriptor open(const char* function, const std::string& name, int flags) {
    Descriptor file(name, flags);
    if (!file) {
        const int error = errno;
        throwRuntimeError(function, "Cannot open " + withoutZeros(name), error);
    }
    return file;
}

FilePtr toStdio(const char* function, const std::string& name, Descriptor&& descriptor, const char* mode) {
    FilePtr file(::fdopen(descriptor.number(), mode));
    if (!file)
        throwRuntimeError(function, "Cannot open " + name, errno);
    descriptor.release();
    return file;
}

} // namespace

Descriptor openForReading(const char* function, const std::string& name) {
    Descriptor file = open(function, name, O_RDONLY);
    // Linux opens a directory for reading and fails only later, which no library reports well.
    struct stat status {};
    if (fstat(file.number(), &status) == 0 && S_ISDIR(status.st_mode))
        throwRuntimeError(function, "Cannot open " + name, EISDIR);
    return file;
}

FilePtr openFile(const char* function, const std::string& name) {
    return toStdio(function, name, openForReading(function, name), "rb");
}

OutputFile::OutputFile(const char* writer, const std::string& fileName)
    : function(writer)
    , name(fileName)
    , file(toStdio(function, name, open(function, name, O_WRONLY | O_CREAT), "wb")) {}

bool OutputFile::note(bool done) noexcept {
    if (!done && error == 0)
        error = errno != 0 ? errno : EIO;
    return error == 0;
}

void OutputFile::truncate() {
    struct stat status {};
    const int descriptor = fileno(file.get());
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        note(ftruncate(descriptor, 0) == 0);
}

bool OutputFile::write(const void* bytes, std::size_t size) noexcept {
    errno = 0;
    return error == 0 && note(std::fwrite(bytes, 1, size, file.get()) == size);
}

bool OutputFile::flush() noexcept {
    errno = 0;
    return error == 0 && note(std::fflush(file.get()) == 0);
}

void OutputFile::close() {
    flush();
    errno = 0;
    note(std::fclose(file.release()) == 0);
    if (error != 0)
        throwRuntimeError(function, "Cannot write " + name, error);
}

} // namespace Ko
