#pragma once

#include "client/Clock.h"
#include "game/Cues.h"
#include "game/Listener.h"

#include <span>
#include <string>
#include <vector>

namespace drench::game {

/// A cue in words, with the side that it comes from: "splash, left", "steps on wood, behind".
/// Empty for what one's own body does, which needs no telling.
std::string captionOf(const Cue& cue, const Listener& listener);

/// The captions on the screen: a few, each for a moment.
class Captions {
  public:
    static constexpr std::size_t mostLines = 4;

    struct Line {
        std::string words;

        /// When the sound was heard last.
        client::Time moment;
    };

    /// Words that are shown already are shown for longer. Sounds too far away to be heard well are
    /// left out, and the oldest line goes if there are too many.
    void hear(std::span<const Cue> cues, const Listener& listener, client::Time now);

    /// The lines that are shown now, the longest known first.
    const std::vector<Line>& linesAt(client::Time now);

  private:
    std::vector<Line> lines_;
};

} // namespace drench::game
