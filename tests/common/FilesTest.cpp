#include "common/Files.h"
#include "common/ChildProcess.h"
#include "common/Descriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

using namespace drench;

namespace {

const std::string binary("\0\r\n\xff 1\n\n", 8);

template<typename Call>
std::string errorOf(const Call& call) {
    try {
        call();
    } catch (const InputError& error) {
        return error.what();
    }
    return "no error";
}

std::string readError(const std::string& path) {
    return errorOf([&] { readFile(path); });
}

std::string writeError(const std::string& path, const std::string& bytes = "new") {
    return errorOf([&] { replaceFile(path, bytes); });
}

std::set<std::string> namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename());
    return names;
}

using Names = std::set<std::string>;

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

/// While it lives, files cannot grow beyond this many bytes.
struct FileSizeLimit {
    explicit FileSizeLimit(rlim_t bytes) : handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &original);
        const rlimit limited{bytes, original.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &original);
        std::signal(SIGXFSZ, handler);
    }

  private:
    rlimit original{};
    void (*handler)(int);
};

/// While it lives, standard output goes to the end of a file.
struct RedirectedOutput {
    explicit RedirectedOutput(const std::string& path) : original(dup(STDOUT_FILENO)) {
        fflush(stdout);
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(file, STDOUT_FILENO);
        close(file);
    }
    RedirectedOutput(const RedirectedOutput&) = delete;
    RedirectedOutput& operator=(const RedirectedOutput&) = delete;
    ~RedirectedOutput() {
        dup2(original, STDOUT_FILENO);
        close(original);
    }

  private:
    int original;
};

/// While it lives, a signal every two milliseconds interrupts system calls that wait.
struct Interruptions {
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, &handler);
        const itimerval often{{0, 2000}, {0, 2000}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;
    ~Interruptions() {
        const itimerval never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &handler, nullptr);
    }

  private:
    struct sigaction handler {};
};

void waitABit() {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

/// More than a pipe holds, each part different.
std::string manyBytes() {
    std::string bytes;
    for (int i = 0; i < 100000; ++i)
        bytes += std::to_string(i) + " ";
    return bytes;
}

} // namespace

TEST(FilesReading, GivesTheBytesAsTheyStand) {
    const TemporaryFolder folder;
    EXPECT_EQ(readFile(folder.write("binary", binary)), binary);
    EXPECT_EQ(readFile(folder.write("empty", "")), "");
    const std::string large(300001, 'x');
    EXPECT_EQ(readFile(folder.write("large", large)), large);
    EXPECT_EQ(readFile("/dev/null"), "");
}

TEST(FilesReading, GoesOnAfterInterruptions) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const std::string bytes = manyBytes();
    ChildProcess writer([&] {
        const Descriptor pipe(open(path.c_str(), O_WRONLY));
        waitABit();
        const std::size_t half = bytes.size() / 2;
        const bool first = write(pipe.number, bytes.data(), half) == ssize_t(half);
        waitABit();
        const std::size_t rest = bytes.size() - half;
        _exit(first && write(pipe.number, bytes.data() + half, rest) == ssize_t(rest) ? 0 : 1);
    });
    const Descriptor early(open(path.c_str(), O_RDONLY | O_NONBLOCK));
    pollfd polled = {early.number, POLLIN, 0};
    ASSERT_EQ(poll(&polled, 1, 20000), 1) << "opening is not to be interrupted";
    const Interruptions interruptions;
    EXPECT_EQ(readFile(path), bytes);
    EXPECT_EQ(writer.wait(), 0);
}

TEST(FilesReading, StandardInputMayBeClosed) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "bytes");
    ChildProcess reader([&] {
        close(STDIN_FILENO);
        const bool isRead = readFile(path) == "bytes";
        _exit(isRead && fcntl(STDIN_FILENO, F_GETFD) == -1 ? 0 : 1);
    });
    EXPECT_EQ(reader.wait(), 0) << "the file, as descriptor 0, is read and closed";
}

TEST(FilesReading, SaysWhatCannotBeReadAndWhy) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/none";
    EXPECT_EQ(readError(path), path + ": cannot be read (No such file or directory)");
    EXPECT_EQ(readError(folder.path), folder.path + ": cannot be read (it is a folder)");
    EXPECT_EQ(readError(folder.write("file", "") + "/x"),
              folder.path + "/file/x: cannot be read (Not a directory)");
    EXPECT_EQ(readError(""), ": cannot be read (No such file or directory)");
}

TEST(FilesReading, FileLargerThanAnyArenaIsRefused) {
    const TemporaryFolder folder;
    const std::string path = folder.write("large", "");
    std::filesystem::resize_file(path, 64 << 20);
    EXPECT_EQ(readFile(path).size(), size_t{64} << 20);
    std::filesystem::resize_file(path, (64 << 20) + 1);
    EXPECT_EQ(readError(path), path + ": is too large (more than 64 MiB)");
    EXPECT_EQ(readFile(path, (64 << 20) + 1).size(), (size_t{64} << 20) + 1);
}

TEST(FilesWriting, MakesANewFileOfExactlyTheseBytes) {
    const TemporaryFolder folder;
    for (const std::string& bytes : {binary, std::string(), std::string(3000000, 'x')}) {
        const std::string path = folder.path + "/new" + std::to_string(bytes.size());
        replaceFile(path, bytes);
        EXPECT_EQ(readFile(path), bytes);
    }
    EXPECT_EQ(namesIn(folder.path), (Names{"new0", "new3000000", "new8"}));
}

TEST(FilesWriting, NewFileGetsTheModeThatFilesGetHere) {
    const TemporaryFolder folder;
    const mode_t original = umask(027);
    replaceFile(folder.path + "/new", "");
    EXPECT_EQ(umask(original), mode_t{027}) << "and the mask stays";
    EXPECT_EQ(modeOf(folder.path + "/new"), mode_t{0640});
}

TEST(FilesWriting, ReplacedFileKeepsItsMode) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old and longer than the new one");
    chmod(path.c_str(), 0604);
    replaceFile(path, "new");
    EXPECT_EQ(readFile(path), "new");
    EXPECT_EQ(modeOf(path), mode_t{0604});
    EXPECT_EQ(namesIn(folder.path), Names{"file"});
}

TEST(FilesWriting, WhoHasTheOldFileOpenKeepsItWhole) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old bytes");
    const int reader = open(path.c_str(), O_RDONLY);
    replaceFile(path, "new");
    char bytes[16] = {};
    EXPECT_EQ(read(reader, bytes, sizeof bytes), 9);
    EXPECT_STREQ(bytes, "old bytes");
    close(reader);
}

TEST(FilesWriting, FailureInTheMiddleLeavesTheOldFileAndNothingElse) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    const std::string fresh = folder.path + "/fresh";
    {
        const FileSizeLimit limit(100000);
        const std::string large(100001, 'x');
        EXPECT_EQ(writeError(path, large), path + ": cannot be written (File too large)");
        EXPECT_EQ(writeError(fresh, large), fresh + ": cannot be written (File too large)");
    }
    EXPECT_EQ(readFile(path), "old");
    EXPECT_EQ(namesIn(folder.path), Names{"file"});
}

TEST(FilesWriting, SaysWhatCannotBeWrittenAndWhy) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "old");
    const std::string nowhere = folder.path + "/none/file";
    const std::string beyond = file + "/file";
    const std::string tooLong = folder.path + "/" + std::string(300, 'x');
    EXPECT_EQ(writeError(nowhere), nowhere + ": cannot be written (No such file or directory)");
    EXPECT_EQ(writeError(beyond), beyond + ": cannot be written (Not a directory)");
    EXPECT_EQ(writeError(tooLong), tooLong + ": cannot be written (File name too long)");
    EXPECT_EQ(writeError(folder.path), folder.path + ": cannot be written (it is a folder)");
    EXPECT_EQ(writeError(""), ": cannot be written (No such file or directory)");
    EXPECT_EQ(writeError("/dev/full"), "/dev/full: cannot be written (No space left on device)");
    EXPECT_EQ(namesIn(folder.path), Names{"file"});
    EXPECT_EQ(readFile(file), "old");
}

TEST(FilesWriting, WhatCannotBeginIsToldBeforehandInTheSameWords) {
    const TemporaryFolder folder;
    const std::string file = folder.write("file", "old");
    for (const std::string& path : {folder.path + "/none/file", file + "/file",
                                    folder.path + "/" + std::string(300, 'x'), folder.path}) {
        EXPECT_EQ(errorOf([&] { requireWritable(path); }), writeError(path));
    }
    for (const std::string& path : {file, folder.path + "/new", std::string("/dev/null")})
        EXPECT_NO_THROW(requireWritable(path)) << path;
    EXPECT_EQ(namesIn(folder.path), Names{"file"});
    EXPECT_EQ(readFile(file), "old");
}

TEST(FilesWriting, LinksAreFollowedAndStay) {
    const TemporaryFolder folder;
    const std::string inner = folder.path + "/inner";
    std::filesystem::create_directory(inner);
    folder.write("inner/file", "old");
    std::filesystem::create_symlink("inner/second", folder.path + "/first");
    std::filesystem::create_symlink("file", inner + "/second");
    replaceFile(folder.path + "/first", "new");
    EXPECT_EQ(readFile(inner + "/file"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path + "/first"));
    EXPECT_TRUE(std::filesystem::is_symlink(inner + "/second"));
    EXPECT_EQ(namesIn(inner), (Names{"file", "second"}));
}

TEST(FilesWriting, LinkToNothingGetsItsTarget) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.path + "/target", folder.path + "/link");
    replaceFile(folder.path + "/link", "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path + "/link"));
    EXPECT_EQ(readFile(folder.path + "/target"), "new");
}

TEST(FilesWriting, LinkToItselfIsRefused) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/link";
    std::filesystem::create_symlink("link", path);
    EXPECT_EQ(writeError(path), path + ": cannot be written (Too many levels of symbolic links)");
    EXPECT_EQ(namesIn(folder.path), Names{"link"});
}

TEST(FilesWriting, DevicesAreWrittenInto) {
    replaceFile("/dev/null", binary);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(FilesWriting, GoesOnAfterInterruptions) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const std::string bytes = manyBytes();
    ChildProcess reader([&] {
        const Descriptor pipe(open(path.c_str(), O_RDONLY));
        std::string read;
        char block[100000];
        for (ssize_t count; (count = ::read(pipe.number, block, sizeof block)) > 0; waitABit())
            read.append(block, static_cast<std::size_t>(count));
        _exit(read == bytes ? 0 : 1);
    });
    {
        const Descriptor early(open(path.c_str(), O_WRONLY));
        const Interruptions interruptions;
        replaceFile(path, bytes);
    }
    EXPECT_EQ(reader.wait(), 0);
}

TEST(FilesWriting, StandardOutputIsWrittenIntoAlsoWhenItIsAFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("output", "before ");
    {
        const RedirectedOutput redirected(path);
        replaceFile("/dev/stdout", "new ");
        EXPECT_EQ(write(STDOUT_FILENO, "after", 5), 5);
    }
    EXPECT_EQ(readFile(path), "before new after");
    EXPECT_EQ(namesIn(folder.path), Names{"output"});
}

TEST(FileInMaking, TakesItsPlaceOnceItIsWhole) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    FileInMaking file(path);
    replaceFile(file.name(), "new");
    EXPECT_EQ(readFile(path), "old");
    file.finish();
    EXPECT_EQ(readFile(path), "new");
    EXPECT_EQ(namesIn(folder.path), Names{"file"});
}

TEST(FileInMaking, LeavesNothingWhenItIsNotFinished) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    {
        const FileInMaking file(path);
        EXPECT_EQ(namesIn(folder.path).size(), 2u);
    }
    EXPECT_EQ(readFile(path), "old");
    EXPECT_EQ(namesIn(folder.path), Names{"file"});
}

TEST(FileInMaking, RefusesWhatItCannotReplace) {
    const TemporaryFolder folder;
    EXPECT_THROW(FileInMaking(folder.path + "/none/file"), InputError);
    EXPECT_THROW(FileInMaking{folder.path}, InputError);
    EXPECT_THROW(FileInMaking("/dev/null"), InputError);
    EXPECT_EQ(namesIn(folder.path), Names{});
}
