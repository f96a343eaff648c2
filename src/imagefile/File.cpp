// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/File.h"

#include "util/Descriptor.h"
#include "util/Errors.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <utility>

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

FilePtr openFile(const char* function, const std::string& name) {
    Descriptor file = open(function, name, O_RDONLY);
    // Linux opens a directory for reading and fails only later, which no library reports well.
    struct stat status {};
    if (fstat(file.number(), &status) == 0 && S_ISDIR(status.st_mode))
        throwRuntimeError(function, "Cannot open " + name, EISDIR);
    return toStdio(function, name, std::move(file), "rb");
}

FilePtr openMemory(const void* data, std::size_t size) {
    // Only read, whatever the type says.
    FilePtr file(fmemopen(const_cast<void*>(data), size, "rb"));
    if (!file)
        throw std::bad_alloc();
    return file;
}

OutputFile::OutputFile(const char* writer, const std::string& fileName)
    : function(writer)
    , name(&fileName)
    , file(toStdio(function, fileName, open(function, fileName, O_WRONLY | O_CREAT), "wb")) {}

OutputFile::OutputFile(const char* writer, std::vector<unsigned char>& bytes)
    : function(writer)
    , memory(&bytes) {}

bool OutputFile::note(bool done) noexcept {
    if (!done && error == 0)
        error = errno != 0 ? errno : EIO;
    return error == 0;
}

void OutputFile::truncate() {
    if (memory)
        return;
    struct stat status {};
    const int descriptor = fileno(file.get());
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        note(ftruncate(descriptor, 0) == 0);
}

bool OutputFile::write(const void* bytes, std::size_t size) noexcept {
    if (memory)
        return error == 0 && append(bytes, size);
    errno = 0;
    return error == 0 && note(std::fwrite(bytes, 1, size, file.get()) == size);
}

bool OutputFile::append(const void* bytes, std::size_t size) noexcept {
    const auto* const first = static_cast<const unsigned char*>(bytes);
    try {
        memory->insert(memory->end(), first, first + size);
    } catch (const std::exception&) {
        error = ENOMEM;
    }
    return error == 0;
}

bool OutputFile::flush() noexcept {
    if (memory)
        return error == 0;
    errno = 0;
    return error == 0 && note(std::fflush(file.get()) == 0);
}

void OutputFile::close() {
    if (memory && error != 0)
        throw std::bad_alloc();
    if (memory)
        return;
    flush();
    errno = 0;
    note(std::fclose(file.release()) == 0);
    if (error != 0)
        throwRuntimeError(function, "Cannot write " + *name, error);
}

} // namespace Ko
