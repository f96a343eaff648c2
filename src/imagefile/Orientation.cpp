// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/Orientation.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

namespace Ko {

namespace {

using Bytes = std::vector<unsigned char>;

/// Reads on in the file; all that is not there is nothing.
class Input {
public:
    explicit Input(std::FILE* f)
        : file(f) {}

    /// As many bytes as there are, at most so many.
    Bytes take(std::size_t size) {
        Bytes bytes(size);
        bytes.resize(std::fread(bytes.data(), 1, size, file));
        return bytes;
    }

    void skip(std::uint32_t size) {
        if (std::fseek(file, static_cast<long>(size), SEEK_CUR) == 0)
            return;
        constexpr std::size_t atOnce = 4096; // of a pipe
        while (size != 0) {
            const std::size_t wanted = std::min<std::size_t>(size, atOnce);
            if (take(wanted).size() < wanted)
                return;
            size -= static_cast<std::uint32_t>(wanted);
        }
    }

private:
    std::FILE* file;
};

enum class Order { little, big };

/// An unsigned number of so many bytes; nothing where the bytes end before it does.
std::optional<std::uint32_t> number(const Bytes& bytes, std::size_t at, std::size_t size, Order order) {
    if (at > bytes.size() || bytes.size() - at < size)
        return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = value << 8 | bytes[order == Order::big ? at + i : at + size - 1 - i];
    return value;
}

bool beginsWith(const Bytes& bytes, const char* text, std::size_t size) {
    return bytes.size() >= size && std::memcmp(bytes.data(), text, size) == 0;
}

/// The tag in the first directory of EXIF data, which are a TIFF file from their byte @p begin on.
Orientation orientationInExif(const Bytes& exif, std::size_t begin) {
    const Bytes tiff(exif.begin() + static_cast<std::ptrdiff_t>(begin), exif.end());
    Order order = Order::little;
    if (beginsWith(tiff, "MM\0*", 4))
        order = Order::big;
    else if (!beginsWith(tiff, "II*\0", 4))
        return OR_UPRIGHT;
    const auto directory = number(tiff, 4, 4, order);
    const auto count = directory ? number(tiff, *directory, 2, order) : std::nullopt;
    constexpr std::size_t entrySize = 12; // tag, type, count, value
    constexpr std::uint32_t orientationTag = 0x112;
    constexpr std::uint32_t shortType = 3;
    for (std::size_t i = 0; count && i < *count; ++i) {
        const std::size_t entry = std::size_t{*directory} + 2 + i * entrySize;
        const auto tag = number(tiff, entry, 2, order);
        if (!tag)
            break;
        if (*tag != orientationTag)
            continue;
        const auto value = number(tiff, entry + 8, 2, order);
        const bool known =
            number(tiff, entry + 2, 2, order) == shortType && value && *value >= OR_UPRIGHT && *value <= OR_ROTATED_270;
        return known ? static_cast<Orientation>(*value) : OR_UPRIGHT;
    }
    return OR_UPRIGHT;
}

/// From behind the first marker on.
Orientation orientationInJpeg(Input& input) {
    constexpr unsigned char restart0 = 0xD0, endOfImage = 0xD9, startOfScan = 0xDA, app1 = 0xE1;
    for (;;) {
        const Bytes lead = input.take(1);
        Bytes marker = lead;
        while (!marker.empty() && marker[0] == 0xFF) // any number of them
            marker = input.take(1);
        if (lead.empty() || lead[0] != 0xFF || marker.empty() || marker[0] == startOfScan || marker[0] == endOfImage)
            return OR_UPRIGHT;
        if (marker[0] == 0x01 || (marker[0] >= restart0 && marker[0] < endOfImage))
            continue; // has no length
        const auto size = number(input.take(2), 0, 2, Order::big);
        if (!size || *size < 2)
            return OR_UPRIGHT;
        if (marker[0] != app1) {
            input.skip(*size - 2);
            continue;
        }
        const Bytes segment = input.take(*size - 2);
        constexpr std::size_t nameSize = 6;
        if (beginsWith(segment, "Exif\0\0", nameSize))
            return orientationInExif(segment, nameSize);
    }
}

/// From behind the signature on.
Orientation orientationInPng(Input& input) {
    constexpr std::uint32_t mostExif = 1 << 16; // the directory wanted is the first
    constexpr std::uint32_t checksumSize = 4;
    for (;;) {
        const auto size = number(input.take(4), 0, 4, Order::big);
        const Bytes type = input.take(4);
        if (!size || type.size() < 4 || beginsWith(type, "IEND", 4))
            return OR_UPRIGHT;
        if (beginsWith(type, "eXIf", 4))
            return orientationInExif(input.take(std::min(*size, mostExif)), 0);
        input.skip(*size);
        input.skip(checksumSize);
    }
}

} // namespace

Orientation orientationIn(std::FILE* file) {
    Input input(file);
    const Bytes first = input.take(2);
    if (beginsWith(first, "\xFF\xD8", 2))
        return orientationInJpeg(input);
    if (beginsWith(first, "\x89P", 2) && beginsWith(input.take(6), "NG\r\n\x1a\n", 6))
        return orientationInPng(input);
    return OR_UPRIGHT;
}

} // namespace Ko
