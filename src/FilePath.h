#pragma once

#include <string>

/// The absolute path of the folder that holds the running executable, without a trailing "/".
/// Links to the executable are followed.
std::string getAppPath();

/// The path of `name` in the Resources folder beside the executable. Nothing is checked.
std::string getResourcePath(std::string name);

/// Always "".
std::string resourcePath(std::string name);
