#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

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

/// Writes the bytes behind what was written, also in several goes. False if that fails; errno says
/// why.
bool writeAll(int descriptor, std::string_view bytes);

/// Replaces the file by exactly these bytes, or leaves it as it was and throws InputError: the
/// bytes go to a temporary file beside it, which is then renamed. Follows links and keeps the mode
/// of a replaced file. Anything but a regular file is written to directly, and so is standard
/// output ("/dev/stdout").
void replaceFile(const std::string& path, const std::string& bytes);

/// Throws InputError if replaceFile() cannot begin: the folder is missing or may not be written to.
/// For programs that have the bytes only after a long run. Changes nothing.
void requireWritable(const std::string& path);

/// A file that another program writes, and that takes its place once it is whole.
class FileInMaking {
  public:
    /// Makes an empty file beside the path. Throws InputError as requireWritable() does, and for
    /// anything but a regular file.
    explicit FileInMaking(std::string path);
    FileInMaking(const FileInMaking&) = delete;
    FileInMaking& operator=(const FileInMaking&) = delete;

    /// Removes the file unless it has taken its place.
    ~FileInMaking();

    /// The file to be written.
    const std::string& name() const { return name_; }

    /// The file takes its place at the path. Throws InputError if it cannot.
    void finish();

  private:
    std::string path_;
    std::string name_;
};

} // namespace drench
