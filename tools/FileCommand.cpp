#include "tools/FileCommand.h"

#include "common/Files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace drench {

FileCommand::FileCommand(CLI::App& app, const char* name, const char* description)
    : options(app.add_subcommand(name, description)) {}

void FileCommand::addFile(const char* description) {
    options->add_option("file", *file, description)->required()->type_name("FILE");
}

void FileCommand::addOutput(const char* description) {
    options->add_option("-o,--output", *output, description)->required()->type_name("FILE");
}

void requirePngName(const std::string& output) {
    std::string ending = std::filesystem::path(output).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (!ending.empty() && ending != ".png")
        throw InputError(output + ": a picture is written as PNG; let its name end in .png");
}

void requireOther(const std::string& input, const std::string& output) {
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored))
        throw InputError(output + ": is the input; the result needs a file of its own");
}

void writeResult(const std::string& input, const std::string& output, const std::string& bytes) {
    requireOther(input, output);
    replaceFile(output, bytes);
}

} // namespace drench
