// SPDX-License-Identifier: BSD-2-Clause
#include "Program.h"

#include "Stop.h"

#include <Kovanta/Version.h>

#include <charconv>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace example {

namespace {

constexpr const char* exitCodes = R"(Exit codes:
  0    done
  1    failed; standard error says why
  2    wrong arguments
  130  ended by Ctrl-C, or 128 and the number of another signal: what was written
       until then is kept)";

/// The form that manuals are made from: usage, what the program does, arguments, options.
class Help : public CLI::Formatter {
public:
    Help() {
        column_width(26);
        label("Positionals", "Arguments");
    }

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        std::string help = make_usage(app, std::move(name)) + "\n" + wrapped(app->get_description(), 0);
        help += make_positionals(app) + make_groups(app, mode);
        return help + "\n" + app->get_footer() + "\n";
    }

    std::string make_usage(const CLI::App* app, std::string name) const override {
        std::string usage = "Usage: " + name + " [OPTION]...";
        for (const CLI::Option* option : app->get_options())
            if (option->get_positional())
                usage += " " + make_option_usage(option);
        return usage + "\n";
    }

    std::string make_option(const CLI::Option* option, bool positional) const override {
        std::string names = option->get_name(positional, !positional);
        if (const std::size_t comma = names.find(','); comma != std::string::npos)
            names.insert(comma + 1, " ");
        if (!positional && option->get_type_size() != 0)
            names += " " + option->get_type_name();
        std::string text = option->get_description();
        if (!option->get_default_str().empty())
            text += " (" + option->get_default_str() + " by default)";
        names = "  " + names;
        names += names.size() + 2 > column_width_ ? "\n" + std::string(column_width_, ' ')
                                                  : std::string(column_width_ - names.size(), ' ');
        return names + wrapped(text, column_width_);
    }

private:
    /// Breaks lines between words.
    static std::string wrapped(const std::string& text, std::size_t indent) {
        constexpr std::size_t width = 80;
        std::istringstream words(text);
        std::string result;
        std::size_t column = indent;
        for (std::string word; words >> word; column += word.size()) {
            if (column > indent && column + 1 + word.size() > width) {
                result += "\n" + std::string(indent, ' ');
                column = indent;
            } else if (column > indent) {
                result += " ";
                ++column;
            }
            result += word;
        }
        return result + "\n";
    }
};

} // namespace

Program::Program(int count, char** words, const std::string& description, const std::string& more)
    : CLI::App(description, std::filesystem::path(words[0]).filename().string())
    , argc(count)
    , argv(words) {
    formatter(std::make_shared<Help>());
    set_help_flag("-h,--help", "Say this and exit");
    set_version_flag("--version", get_name() + " (Kovanta) " + Ko::version(), "Say the version and exit");
    footer((more.empty() ? "" : more + "\n\n") + exitCodes);
}

int Program::run(const std::function<void()>& work) {
    std::signal(SIGPIPE, SIG_IGN); // a pipe that nobody reads any more is a failed write, not the end of a recording
    try {
        parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) // help or version
            return exit(e) == 0 && std::cout.flush() ? 0 : 1;
        std::cerr << get_name() << ": " << e.what() << "\nTry '" << get_name() << " --help'.\n";
        return 2;
    }
    try {
        work();
        if (!std::cout.flush())
            throw std::runtime_error("Cannot write to standard output.");
    } catch (const std::exception& e) {
        std::cerr << get_name() << ": " << e.what() << "\n";
        return 1;
    }
    return stopSignal() == 0 ? 0 : 128 + stopSignal();
}

CLI::Validator wholeNumber(long low, long high) {
    const auto check = [low, high](const std::string& text) -> std::string {
        long value = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        const bool octal = text.size() > 1 && text[0] == '0'; // to what reads the number afterwards
        if (error == std::errc() && stop == end && !octal && value >= low && value <= high)
            return "";
        return "This has to be a whole number from " + std::to_string(low) + " to " + std::to_string(high) +
               ", unlike '" + text + "'.";
    };
    return {check, ""};
}

} // namespace example
