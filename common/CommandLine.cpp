#include "common/CommandLine.h"

#include "common/ExitStatus.h"
#include "common/Files.h"

#include <iostream>

namespace drench {

std::optional<int> parseArguments(CLI::App& app, int argc, char** argv,
                                  const std::function<void()>& settle) {
    try {
        app.parse(argc, argv);
        settle();
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : notUsable;
    }
}

int runTool(const std::function<int()>& run) {
    try {
        const int status = run();
        if (!std::cout.flush())
            throw InputError("the report cannot be written");
        return status;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return notUsable;
    }
}

} // namespace drench
