#include "tools/MapCommand.h"

#include "common/Files.h"

#include <filesystem>

namespace drench {

MapCommand::MapCommand(CLI::App& app, const char* name, const char* description)
    : options(app.add_subcommand(name, description)) {}

void MapCommand::addFile(const char* description) {
    options->add_option("file", *file, description)->required()->type_name("FILE");
}

void MapCommand::addOutput(const char* description) {
    options->add_option("-o,--output", *output, description)->required()->type_name("FILE");
}

void writeResult(const std::string& input, const std::string& output, const std::string& bytes) {
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored))
        throw InputError(output + ": is the input; the result needs a file of its own");
    replaceFile(output, bytes);
}

} // namespace drench
