#pragma once

#include "client/Tap.h"
#include "client/recording/RecordingWriter.h"
#include "common/Console.h"

#include <memory>
#include <string>

namespace drench {

/// The arena of a file of any kind as the server reads it, for a recording; empty for no file.
/// Throws InputError as arena::readWholeArena() does.
std::string arenaTextOf(const std::string& file);

/// The recording that --save asks for, if it does.
class Saving {
  public:
    /// @param path  empty for no recording
    /// Throws InputError as RecordingWriter does.
    Saving(const std::string& path, const client::RecordingHeader& header);

    /// What takes the datagrams to be recorded; empty without a recording. Must not outlive this.
    client::LineTap tap();

    /// Says, once, that the recording ended early, if it has.
    void tellProblem(Console& console);

    /// Ends the recording. Returns whether it is whole, or was not asked for.
    bool finish(Console& console);

  private:
    std::unique_ptr<client::RecordingWriter> writer_;
    bool hasTold_ = false;
};

} // namespace drench
