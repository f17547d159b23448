#include "common/Files.h"

#include "common/Descriptor.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace drench {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what) {
    throw InputError(path + ": " + what);
}

[[noreturn]] void failWithReason(const std::string& path, const std::string& what) {
    fail(path, what + " (" + std::strerror(errno) + ")");
}

/// The mode that a newly made file gets.
mode_t newFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// The end of a chain of links; a file may be there or not.
std::string linkTarget(const std::string& path) {
    // The most links that Linux follows.
    constexpr int mostLinks = 40;
    std::filesystem::path target = path;
    std::error_code noLink;
    for (int links = 0; links < mostLinks; ++links) {
        const std::filesystem::path next = std::filesystem::read_symlink(target, noLink);
        if (noLink)
            break;
        target = target.parent_path() / next;
    }
    return target.string();
}

/// The existing file at a path that is to be written; nothing if it would be new.
std::optional<struct stat> fileToReplace(const std::string& path) {
    struct stat existing {};
    if (stat(path.c_str(), &existing) != 0) {
        if (errno != ENOENT)
            failWithReason(path, "cannot be written");
        return std::nullopt;
    }
    if (S_ISDIR(existing.st_mode))
        fail(path, "cannot be written (it is a folder)");
    return existing;
}

/// Makes a file beside the one to be replaced, and stores its name in `name`.
int makeTemporaryFile(const std::string& path, const std::string& target, std::string& name) {
    name = target + ".XXXXXX";
    const int made = mkstemp(name.data());
    if (made < 0)
        failWithReason(path, "cannot be written");
    return made;
}

bool isStandardOutput(const struct stat& file) {
    struct stat output {};
    return fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev &&
           output.st_ino == file.st_ino;
}

} // namespace

bool writeAll(int descriptor, std::string_view bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

std::string readFile(const std::string& path, std::size_t most) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (file.number < 0 || fstat(file.number, &status) != 0)
        failWithReason(path, "cannot be read");
    if (S_ISDIR(status.st_mode))
        fail(path, "cannot be read (it is a folder)");

    std::string bytes;
    char block[65536];
    while (true) {
        const ssize_t count = read(file.number, block, sizeof block);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            failWithReason(path, "cannot be read");
        if (count == 0)
            return bytes;
        bytes.append(block, static_cast<std::size_t>(count));
        if (bytes.size() > most)
            fail(path, "is too large (more than " + std::to_string(most >> 20) + " MiB)");
    }
}

void replaceFile(const std::string& path, const std::string& bytes) {
    const std::optional<struct stat> existing = fileToReplace(path);
    if (existing && isStandardOutput(*existing)) {
        // Others may write to standard output before and after, even if it is a regular file.
        if (!writeAll(STDOUT_FILENO, bytes))
            failWithReason(path, "cannot be written");
        return;
    }
    if (existing && !S_ISREG(existing->st_mode)) {
        const Descriptor device(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        if (device.number < 0 || !writeAll(device.number, bytes))
            failWithReason(path, "cannot be written");
        return;
    }

    const std::string target = linkTarget(path);
    std::string temporary;
    const int made = makeTemporaryFile(path, target, temporary);
    const mode_t mode = existing ? existing->st_mode & 07777 : newFileMode();
    bool whole = writeAll(made, bytes) && fchmod(made, mode) == 0 && fsync(made) == 0;
    // A full disk may be reported only at the close.
    whole = close(made) == 0 && whole;
    if (!whole || rename(temporary.c_str(), target.c_str()) != 0) {
        const int reason = errno;
        unlink(temporary.c_str());
        errno = reason;
        failWithReason(path, "cannot be written");
    }
}

void requireWritable(const std::string& path) {
    const std::optional<struct stat> existing = fileToReplace(path);
    if (existing && isStandardOutput(*existing))
        return;
    if (existing && !S_ISREG(existing->st_mode)) {
        if (access(path.c_str(), W_OK) != 0)
            failWithReason(path, "cannot be written");
        return;
    }
    std::string temporary;
    close(makeTemporaryFile(path, linkTarget(path), temporary));
    unlink(temporary.c_str());
}

FileInMaking::FileInMaking(std::string path) : path_(std::move(path)) {
    const std::optional<struct stat> existing = fileToReplace(path_);
    if (existing && !S_ISREG(existing->st_mode))
        fail(path_, "cannot be written (it is no file)");
    close(makeTemporaryFile(path_, linkTarget(path_), name_));
}

FileInMaking::~FileInMaking() {
    if (!name_.empty())
        unlink(name_.c_str());
}

void FileInMaking::finish() {
    const std::optional<struct stat> existing = fileToReplace(path_);
    const mode_t mode = existing ? existing->st_mode & 07777 : newFileMode();
    if (chmod(name_.c_str(), mode) != 0 || rename(name_.c_str(), linkTarget(path_).c_str()) != 0)
        failWithReason(path_, "cannot be written");
    name_.clear();
}

} // namespace drench
