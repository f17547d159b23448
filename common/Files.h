#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace drench {

/// Bad input or an unusable file; what() is one line for the user and names the place.
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// More than any arena has.
constexpr std::size_t mostArenaBytes = std::size_t{64} << 20;

/// The file's bytes, unchanged. Throws InputError with the path and the system's reason if the file
/// cannot be read, is a folder, or has more than `most` bytes.
std::string readFile(const std::string& path, std::size_t most = mostArenaBytes);

/// Replaces the file by exactly these bytes, or leaves it as it was and throws InputError: the
/// bytes go to a temporary file beside it, which is then renamed. Follows links and keeps the mode
/// of a replaced file. Anything but a regular file is written to directly, and so is standard
/// output ("/dev/stdout").
void replaceFile(const std::string& path, const std::string& bytes);

/// Throws InputError if replaceFile() cannot begin: the folder is missing or may not be written to.
/// For programs that have the bytes only after a long run. Changes nothing.
void requireWritable(const std::string& path);

} // namespace drench
