// SPDX-License-Identifier: BSD-2-Clause
#include "imagefile/ParseHeader.h"

#include "Kovanta/ImageFile.h"
#include "util/Errors.h"

#include <boost/lexical_cast.hpp>

#include <istream>
#include <locale>

namespace {

/// Gives a stream the classic locale, in which whitespace and numbers do not depend on the application.
class ClassicLocale {
public:
    explicit ClassicLocale(std::istream& s)
        : stream(s)
        , before(s.imbue(std::locale::classic())) {}
    ~ClassicLocale() { stream.imbue(before); }
    ClassicLocale(const ClassicLocale&) = delete;
    ClassicLocale& operator=(const ClassicLocale&) = delete;

private:
    std::istream& stream;
    std::locale before;
};

[[noreturn]] void refuse() {
    throw boost::bad_lexical_cast(typeid(std::string), typeid(unsigned int));
}

bool endsToken(int character) {
    return character == std::char_traits<char>::eof() ||
           std::isspace(static_cast<char>(character), std::locale::classic());
}

enum class CommentEnd { lineFeed, lineFeedOrStream };

/// Goes to the next token that is not a comment, if there is one.
void skipComments(std::istream& stream, CommentEnd end) {
    while (std::istream::sentry(stream) && stream.peek() == '#')
        while (stream.get() != '\n')
            if (end == CommentEnd::lineFeedOrStream && !stream)
                return;
}

/// The next token as a number; none at the end of the stream is refused too. Only what matters of a token is kept, not
/// its leading zeros, since a file can hold one of gigabytes.
unsigned int nextNumber(std::istream& stream, CommentEnd end) {
    skipComments(stream, end);
    constexpr std::size_t longest = 11; // a sign and 4294967295
    std::string number;
    bool anyZero = false;
    const auto noDigitYet = [&] {
        return number.empty() || number == "+" || number == "-";
    };
    for (int c = stream.peek(); !endsToken(c); stream.get(), c = stream.peek()) {
        const bool sign = (c == '+' || c == '-') && number.empty() && !anyZero;
        // lexical_cast asks the global locale about digit grouping; signs and digits never get it that far.
        if ((!sign && (c < '0' || c > '9')) || number.size() == longest)
            refuse();
        if (c == '0' && noDigitYet())
            anyZero = true;
        else
            number += static_cast<char>(c);
    }
    if (anyZero && noDigitYet())
        number += '0';
    return boost::lexical_cast<unsigned int>(number);
}

void parse(unsigned int& width, unsigned int& height, std::istream& stream, char type, CommentEnd end) {
    constexpr const char* function = "ConvertIm::parseHeader";
    const ClassicLocale classic(stream);
    const auto startsRight = [&] {
        return stream.get() == 'P' && stream.get() == std::char_traits<char>::to_int_type(type);
    };
    if (!startsRight())
        Ko::throwRuntimeError(function, "Incorrect PPM/PGM header.");
    const unsigned int w = nextNumber(stream, end);
    const unsigned int h = nextNumber(stream, end);
    if (nextNumber(stream, end) != 255)
        Ko::throwRuntimeError(function, "Only a maximum color value of 255 is supported now.");
    stream.get();
    width = w;
    height = h;
}

} // namespace

void parseHeader(unsigned int& width, unsigned int& height, std::istream& stream, char type) {
    parse(width, height, stream, type, CommentEnd::lineFeed);
}

void Ko::parseWholeHeader(unsigned int& width, unsigned int& height, std::istream& stream, char type) {
    parse(width, height, stream, type, CommentEnd::lineFeedOrStream);
}
