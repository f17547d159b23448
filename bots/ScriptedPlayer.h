#pragma once

#include "bots/Report.h"
#include "bots/Script.h"
#include "client/RoomAddress.h"

#include <functional>
#include <string>
#include <vector>

namespace drench::bots {

/// The outcome of a script.
struct ScriptedRun {
    PlayerReport player;

    /// Why the player did not get in, or was out before it left; empty when all went well.
    std::string trouble;

    /// A line for each snapshot, in order of arrival, below a line of headings: the tick, the
    /// player's position, view direction, points, and whether it fires and lives, with commas
    /// between them. Numbers are written so that reading them gives back every bit. Empty unless it
    /// was to be kept.
    std::string record;
};

/// Has one player do what a script says, from joining until the script leaves or `goOn` says
/// no, which is asked whenever something has come, and after three seconds at the latest.
ScriptedRun playScript(const client::RoomAddress& room, const std::string& name,
                       const std::vector<Action>& script, bool keepRecord,
                       const std::function<bool()>& goOn);

} // namespace drench::bots
