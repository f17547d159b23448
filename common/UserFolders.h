#pragma once

#include <string>

namespace drench {

/// The folder "drench" of the XDG base directories: in the folder that the environment names, or
/// else in `belowHome` of $HOME; empty if neither is an absolute path. Makes nothing.
/// @param variable  as "XDG_CACHE_HOME"
/// @param belowHome  as ".cache"
std::string userFolder(const char* variable, const char* belowHome);

} // namespace drench
