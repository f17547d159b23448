#include "client/recording/RecordingWriter.h"

#include "common/Files.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace drench::client {

namespace {

/// Well below the second that a block spans.
constexpr std::chrono::milliseconds pause(250);

/// Throws InputError unless a file may be written to: nobody else writes it, and it is empty.
void requireOwn(int file, const std::string& path) {
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        return;
    if (flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw InputError(path + ": is being written by another program");
    // Only now: another writer may just have ended.
    if (fstat(file, &status) == 0 && status.st_size > 0)
        throw InputError(path + ": is there already, and is not overwritten");
}

/// A new file for a recording with this header, which must keep its limits.
int openNew(const std::string& path, const RecordingHeader& header) {
    static_cast<void>(RecordingBytes(header));
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0)
        throw InputError(path + ": cannot be written (" + std::strerror(errno) + ")");
    try {
        requireOwn(file, path);
    } catch (...) {
        close(file);
        throw;
    }
    return file;
}

/// While it lives, new threads of this one get no signals: those are for who waits for them.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_;
};

} // namespace

RecordingWriter::RecordingWriter(const std::string& path, const RecordingHeader& header, Time now,
                                 std::size_t mostBytes)
    : path_(path), start_(now), file_(openNew(path, header)), header_(header),
      mostBytes_(mostBytes) {
    const SignalsBlocked blocked;
    thread_ = std::thread([this] { run(); });
}

RecordingWriter::~RecordingWriter() {
    finish();
}

void RecordingWriter::take(Way way, std::uint32_t line, std::string_view datagram, Time now) {
    const auto time = std::chrono::duration_cast<RecordedTime>(now - start_);
    const std::size_t bytes = datagram.size() + sizeof(RecordedDatagram);
    std::unique_lock lock(mutex_);
    if (isEnding_ || !problem_.empty())
        return;
    if (bytesWaiting_ + bytes > mostBytesWaiting) {
        lock.unlock();
        endEarly("the disk is too slow");
        return;
    }
    hasTaken_ = true;
    bytesWaiting_ += bytes;
    waiting_.push_back({time, way, line, std::string(datagram)});
}

std::string RecordingWriter::problem() const {
    const std::lock_guard lock(mutex_);
    return problem_;
}

std::string RecordingWriter::finish() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
        if (struct stat status{};
            !hasTaken_ && fstat(file_.number, &status) == 0 && S_ISREG(status.st_mode))
            unlink(path_.c_str());
    }
    return problem();
}

void RecordingWriter::run() {
    for (bool isEnding = false; !isEnding;) {
        std::vector<RecordedDatagram> taken;
        {
            std::unique_lock lock(mutex_);
            wake_.wait_for(lock, pause, [this] { return isEnding_; });
            isEnding = isEnding_;
            taken = std::exchange(waiting_, {});
            bytesWaiting_ = 0;
        }
        orEndEarly([&] { keep(std::move(taken)); });
        orEndEarly([&] {
            if (bytes_ && isEnding)
                bytes_->end();
        });
        if (bytes_)
            write(bytes_->takeReady());
    }
}

/// No thread may throw.
template<class Step>
void RecordingWriter::orEndEarly(const Step& step) {
    try {
        step();
    } catch (const std::exception& error) {
        isFull_ = true;
        endEarly(error.what());
    }
}

void RecordingWriter::keep(std::vector<RecordedDatagram>&& taken) {
    if (isFull_)
        return;
    if (!bytes_ && !taken.empty()) {
        first_ = taken.front().time;
        header_.startedAt += first_.count();
        bytes_.emplace(header_, mostBytes_);
    }
    for (RecordedDatagram& datagram : taken) {
        datagram.time -= first_;
        bytes_->add(datagram);
    }
    // Nothing more may come for a long time.
    if (bytes_ && taken.empty())
        bytes_->endBlock();
}

/// After a failure nothing more is written: a reader could not tell what lacks.
void RecordingWriter::write(const std::string& bytes) {
    if (isBroken_ || writeAll(file_.number, bytes))
        return;
    isBroken_ = true;
    endEarly(std::strerror(errno));
}

void RecordingWriter::endEarly(const std::string& reason) {
    const std::lock_guard lock(mutex_);
    if (problem_.empty())
        problem_ = path_ + ": the recording ends early (" + reason + ")";
}

} // namespace drench::client
