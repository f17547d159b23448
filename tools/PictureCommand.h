#pragma once

#include "tools/FileCommand.h"

namespace drench {

/// Adds "picture", which draws an arena.
void addPicture(CLI::App& app, Run& run);

} // namespace drench
