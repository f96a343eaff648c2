// SPDX-License-Identifier: BSD-2-Clause
#include "Rate.h"

#include <charconv>
#include <numeric>
#include <string_view>
#include <system_error>

namespace example {

namespace {

bool parse(unsigned int& value, std::string_view digits) {
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    return error == std::errc() && stop == end;
}

bool parse(Rate& rate, std::string_view text) {
    if (const std::size_t slash = text.find('/'); slash != std::string_view::npos)
        return parse(rate.num, text.substr(0, slash)) && parse(rate.den, text.substr(slash + 1));
    rate.den = 1;
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos)
        return parse(rate.num, text);
    for (std::size_t digit = point + 1; digit < text.size(); ++digit)
        rate.den *= 10;
    return text.size() - point <= 5 &&
           parse(rate.num, std::string(text.substr(0, point)).append(text.substr(point + 1)));
}

} // namespace

void addRate(CLI::App& program, Rate& rate, const std::string& description, const char* name) {
    const auto take = [&rate, name](const std::string& text) {
        Rate given{};
        if (!parse(given, text) || given.den == 0 || perSecond(given) < 0.01 || perSecond(given) > 1000)
            throw CLI::ValidationError(std::string(name) +
                                       ": Frames per second are a number from 0.01 to 1000 or a fraction as "
                                       "30000/1001, unlike '" +
                                       text + "'.");
        const unsigned int divisor = std::gcd(given.num, given.den);
        rate = {given.num / divisor, given.den / divisor};
    };
    program.add_option_function<std::string>(name, take, description)->type_name("RATE");
}

double perSecond(const Rate& rate) {
    return rate.den == 0 ? 0 : static_cast<double>(rate.num) / rate.den;
}

} // namespace example
