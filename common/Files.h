#pragma once

#include <stdexcept>
#include <string>

namespace drench {

/// Bad input or a file that cannot be used; what() is one line for the user and says where.
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The file's bytes as they stand. Throws InputError with the path and the system's reason when it
/// cannot be read, is a folder, or is larger than any arena (64 MiB).
std::string readFile(const std::string& path);

/// Replaces the file by exactly these bytes, or leaves it as it was and throws InputError: the
/// bytes are written beside it and renamed over it. Follows links, keeps the mode of a file that it
/// replaces, and writes straight into what is no regular file and into standard output, which
/// "/dev/stdout" is.
void replaceFile(const std::string& path, const std::string& bytes);

/// Throws InputError where replaceFile() could not even begin, for want of a folder or of the right
/// to write there; for those who have the bytes only after a long run. Changes nothing.
void requireWritable(const std::string& path);

} // namespace drench
