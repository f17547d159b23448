#pragma once

#include "client/Clock.h"
#include "client/recording/Recording.h"
#include "client/recording/RecordingBytes.h"
#include "common/Descriptor.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace drench::client {

/// Writes a recording while it goes on, about once a second, in a thread of its own: take() only
/// keeps what it gets. When the file cannot be written any further, or becomes too large to be
/// read, the recording ends there, and the program goes on; problem() says why.
class RecordingWriter {
  public:
    /// The most bytes that wait for the disk; with more, the recording ends.
    static constexpr std::size_t mostBytesWaiting = std::size_t{32} << 20;

    /// Makes the file, whose times count from the first datagram. Throws InputError if that fails,
    /// if a file with something in it is there already, or if another RecordingWriter has it: a
    /// recording is never overwritten.
    /// @param now  the moment of the header's start, which moves to that of the first datagram
    /// @param mostBytes  see RecordingBytes
    RecordingWriter(const std::string& path, const RecordingHeader& header, Time now,
                    std::size_t mostBytes = recordingLimits::fileBytes);

    /// As finish().
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    /// A datagram passed at `now`. Never waits for the disk.
    void take(Way way, std::uint32_t line, std::string_view datagram, Time now);

    /// Why the recording ended early, as one line; empty if it has not.
    std::string problem() const;

    /// Writes what is left, and the index; nothing is taken any more. Removes the file if it has no
    /// datagrams. Returns problem().
    std::string finish();

  private:
    void run();
    void keep(std::vector<RecordedDatagram>&& taken);
    template<class Step>
    void orEndEarly(const Step& step);
    void write(const std::string& bytes);
    void endEarly(const std::string& reason);

    std::string path_;
    Time start_;
    Descriptor file_;

    /// Of the thread alone; made with the first datagram, at this time.
    RecordingHeader header_;
    RecordedTime first_{};
    std::size_t mostBytes_;
    std::optional<RecordingBytes> bytes_;

    /// A datagram was left out, and with it all that follow: a reader could not tell what lacks.
    bool isFull_ = false;
    bool isBroken_ = false;

    /// Guards the members below.
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<RecordedDatagram> waiting_;
    std::size_t bytesWaiting_ = 0;
    bool hasTaken_ = false;
    bool isEnding_ = false;
    std::string problem_;

    std::thread thread_;
};

} // namespace drench::client
