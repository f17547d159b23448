#pragma once

#include "common/NumberIn.h"

#include <CLI/CLI.hpp>
#include <array>
#include <functional>
#include <memory>
#include <string>

namespace drench {

// Shared by the subcommands of drench-map and of drench-replay.

/// The action of the chosen subcommand; returns the exit status, may throw InputError.
using Run = std::function<int()>;

/// A subcommand and the files that it names. Copies share the names, so an action that runs later
/// sees the parsed ones.
struct FileCommand {
    CLI::App* options;
    std::shared_ptr<std::string> file = std::make_shared<std::string>();
    std::shared_ptr<std::string> output = std::make_shared<std::string>();

    FileCommand(CLI::App& app, const char* name, const char* description);

    /// Both are required.
    void addFile(const char* description);
    void addOutput(const char* description);
};

/// Adds an option of several numbers, one for each element of `numbers`, with this character
/// between them. `form` describes it, such as "WxH".
template<class Number, std::size_t count>
CLI::Option* addNumbers(CLI::App& app, const char* name, std::array<Number, count>& numbers,
                        char separator, const char* form, const char* description) {
    const auto read = [&numbers, name, separator, form](const std::string& text) {
        std::size_t begin = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t end = i + 1 < count ? text.find(separator, begin) : text.size();
            const auto number =
                numberIn<Number>(end == std::string::npos ? "" : text.substr(begin, end - begin));
            if (!number)
                throw CLI::ValidationError(name, text + " is not " + form + " in numbers");
            numbers[i] = *number;
            begin = end + 1;
        }
    };
    return app.add_option_function<std::string>(name, read, description)->type_name(form);
}

/// Throws InputError if a name ends in anything but .png: programs choose the format by the ending.
void requirePngName(const std::string& output);

/// Throws InputError if a result would be written over an input.
void requireOther(const std::string& input, const std::string& output);

/// Writes a result, but never over the file that it was made from.
void writeResult(const std::string& input, const std::string& output, const std::string& bytes);

} // namespace drench
