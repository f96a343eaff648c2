// SPDX-License-Identifier: BSD-2-Clause
#include "Checks.h"
#include "Kovanta/ImageFile.h"

#include <boost/lexical_cast.hpp>

#include <cstdint>
#include <iterator>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace {

/// The grammar in plain words, for a stream in the classic locale: every token is kept whole.
std::string outcome(std::istream& stream, char type, bool ours) {
    unsigned int numbers[3] = {7, 7, 255};
    try {
        if (ours) {
            parseHeader(numbers[0], numbers[1], stream, type);
        } else {
            if (stream.get() != 'P' || stream.get() != type)
                return "magic";
            for (unsigned int& number : numbers) {
                std::string token;
                while (stream >> token && token[0] == '#') {
                    stream.clear();
                    while (stream.get() != '\n') {
                    }
                }
                if (!stream)
                    token.clear();
                if (token.find_first_not_of("+-0123456789") != std::string::npos)
                    return "number";
                number = boost::lexical_cast<unsigned int>(token);
            }
            if (numbers[2] != 255)
                return "maximum";
            stream.get();
        }
    } catch (const std::exception& e) {
        if (ours)
            fuzz::require(numbers[0] == 7 && numbers[1] == 7, "a refused header told a size");
        if (dynamic_cast<const boost::bad_lexical_cast*>(&e))
            return "number";
        return std::string(e.what()).find("maximum") == std::string::npos ? "magic" : "maximum";
    }
    stream.clear();
    const std::string rest(std::istreambuf_iterator<char>(stream), {});
    return std::to_string(numbers[0]) + " " + std::to_string(numbers[1]) + " " + rest;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const std::size_t comment = text.rfind('#');
    if (comment != std::string::npos && text.find('\n', comment) == std::string::npos)
        return 0;
    for (const char type : {'5', '6'}) {
        std::istringstream one(text);
        std::istringstream other(text);
        for (std::istringstream* stream : {&one, &other})
            stream->imbue(std::locale::classic());
        const std::string is = outcome(one, type, true);
        const std::string should = outcome(other, type, false);
        if (is != should)
            fuzz::fail("header: " + is + " instead of " + should);
    }
    return 0;
}
