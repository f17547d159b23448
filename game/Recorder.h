#pragma once

#include "client/recording/RecentRecording.h"
#include "client/recording/RecordingWriter.h"

#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drench::game {

/// Records the match that one plays: always the last two minutes, in memory, and on request all
/// from then on, into a file. Files are written in the background.
class Recorder {
  public:
    using Time = client::Time;

    static constexpr client::RecordedTime recentSpan{120'000'000};

    /// @param folder  of the recordings; empty if there is none
    explicit Recorder(std::string folder) : folder_(std::move(folder)) {}

    /// A room is joined. If it is the same once more, all goes on.
    /// @return sees its datagrams; must not be called after this is destroyed
    client::Tap enter(const std::string& room, Time now);

    /// The room is left: a recording ends, and the last minutes are forgotten.
    void leave(Time now);

    bool isRecording() const { return isRecording_; }

    /// Since the recording began; 0 without one.
    double seconds(Time now) const;

    /// Begins a recording or ends it; does nothing outside of a room.
    /// @param arena  a map text; empty if unknown
    void toggle(const std::string& arena, Time now);

    /// Keeps the last minutes; does nothing outside of a room.
    void keepRecent(const std::string& arena);

    /// What there is to tell the player since the last call, a line each.
    std::vector<std::string> takeNews();

  private:
    /// A file that was begun.
    struct Begun {
        std::string file;
        std::unique_ptr<client::RecordingWriter> writer;

        /// Why there is none; empty otherwise.
        std::string problem;
    };

    struct Waiting {
        client::Way way;
        std::string datagram;
        Time moment;
    };

    void take(client::Way way, std::string_view datagram, Time now);
    void takeBegun();
    void end(Time now);

    std::string folder_;
    std::string room_;
    std::optional<client::RecentRecording> recent_;

    /// A recording that goes on: its file is begun in the background, and what comes until then
    /// waits for it.
    bool isRecording_ = false;
    Time begin_;
    std::future<Begun> beginning_;
    std::vector<Waiting> waiting_;
    Begun begun_;
    std::vector<std::string> news_;

    /// Files that are being written; each ends with a line to tell.
    std::vector<std::future<std::string>> ending_;
};

} // namespace drench::game
