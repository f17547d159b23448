#pragma once

#include "client/recording/Recording.h"
#include "client/recording/RecordingBytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace drench::client {

/// Reads a recording. One that was cut off is read up to there, one that is damaged around the
/// damage; problems() says so. It holds the file and one decoded block in memory.
class RecordingReader {
  public:
    /// Throws InputError if the file cannot be read, is larger than recordingLimits::fileBytes, or
    /// is no recording of a version that is known.
    static RecordingReader open(const std::string& path);

    /// Reads `bytes`, and names them by `name` in problems.
    RecordingReader(std::string bytes, std::string name);

    /// Empty as far as the file was cut off before its end.
    const RecordingHeader& header() const { return header_; }

    /// Of the file.
    const std::string& name() const { return name_; }

    /// The moment of the last datagram.
    RecordedTime duration() const;

    std::uint64_t datagrams() const;
    std::size_t fileBytes() const { return bytes_.size(); }

    /// The next datagram, in the order of their times; nothing at the end.
    std::optional<RecordedDatagram> next();

    /// Goes to before the first datagram at or after this moment.
    void seek(RecordedTime time);

    /// One line each, with the file and the byte; also what next() came upon. No more than this.
    static constexpr std::size_t mostProblems = 100;
    const std::vector<std::string>& problems() const { return problems_; }

  private:
    void readMagic();
    bool readIndex();
    void scan();
    std::size_t takeBlock(std::size_t offset);
    void takeHeader(std::string_view content);
    void takeArena(std::string arena);
    void load(std::size_t block);
    void note(std::size_t offset, const std::string& what);

    std::string bytes_;
    std::string name_;
    RecordingHeader header_;
    bool hasHeader_ = false;
    bool hasMetArena_ = false;
    std::optional<std::uint64_t> arenaChecksum_;
    std::vector<BlockPlace> blocks_;
    std::vector<std::string> problems_;

    /// The next datagram: its block, the datagrams of that block, its number there.
    std::size_t block_ = 0;
    std::vector<RecordedDatagram> loaded_;
    std::size_t nextLoaded_ = 0;
    bool isLoaded_ = false;
};

} // namespace drench::client
