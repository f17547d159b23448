#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace drench::bots {

/// One action of a scripted player.
struct Action {
    enum class Kind { hold, release, jump, turn, say, leave };

    /// The snapshot to act on: the first with this number or a later one, counted from 0 on
    /// joining.
    std::int64_t tick = 0;
    Kind kind = Kind::leave;

    /// For hold and release: an index of keyIndex.
    int key = 0;

    /// Mouse counts.
    int dx = 0;
    int dy = 0;

    /// For say.
    std::string text;

    bool operator==(const Action&) const = default;
};

/// Reads a script: inputs with their times, each on a line of its own. Empty lines, and those that
/// begin with '#', are skipped.
///
///     at <tick> hold <key>         forward, backward, left, right or fire
///     at <tick> release <key>
///     at <tick> jump
///     at <tick> turn <dx> <dy>     mouse counts; positive turns right and down
///     at <tick> say <text>         to the end of the line, at most 30 bytes
///     at <tick> leave              the last line, if it is there
///
/// Ticks must not decrease. `file` is the name that errors begin with: throws InputError
/// "file:line: <the text found>, <the text allowed>".
std::vector<Action> readScript(const std::string& text, const std::string& file);

} // namespace drench::bots
