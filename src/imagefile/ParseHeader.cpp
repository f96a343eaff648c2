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

unsigned int toNumber(const std::string& token) {
    // lexical_cast asks the global locale about digit grouping; a token of signs and digits never gets that far.
    if (token.find_first_not_of("+-0123456789") != std::string::npos)
        throw boost::bad_lexical_cast(typeid(std::string), typeid(unsigned int));
    return boost::lexical_cast<unsigned int>(token);
}

/// The next token that is not a comment; empty at the end of the stream.
std::string nextToken(std::istream& stream) {
    for (;;) {
        std::string token;
        stream >> token;
        if (token.empty() || token[0] != '#')
            return token;
        while (stream.get() != '\n') {
            // a comment ends at a line feed and nowhere else
        }
    }
}

} // namespace

void parseHeader(unsigned int& width, unsigned int& height, std::istream& stream, char type) {
    constexpr const char* function = "ConvertIm::parseHeader";
    const ClassicLocale classic(stream);
    const auto startsRight = [&] {
        return stream.get() == 'P' && stream.get() == std::char_traits<char>::to_int_type(type);
    };
    if (!startsRight())
        Ko::throwRuntimeError(function, "Incorrect PPM/PGM header.");
    const unsigned int w = toNumber(nextToken(stream));
    const unsigned int h = toNumber(nextToken(stream));
    if (toNumber(nextToken(stream)) != 255)
        Ko::throwRuntimeError(function, "Only a maximum color value of 255 is supported now.");
    stream.get();
    width = w;
    height = h;
}
