#pragma once

#include "bots/Report.h"
#include "bots/Script.h"
#include "client/RoomAddress.h"
#include "client/Tap.h"

#include <functional>
#include <string>
#include <vector>

namespace drench::bots {

/// The outcome of a script.
struct ScriptedRun {
    PlayerReport player;

    /// The reason why the player did not get in, or was out before it left; empty if all went well.
    std::string trouble;

    /// A line of headings, then a line for each snapshot in order of arrival: the tick, the
    /// player's position, view direction, points, and whether it fires and lives, with commas
    /// between them. Numbers have enough digits to give back every bit. Empty unless a record was
    /// asked for.
    std::string record;
};

/// Plays a script with one player, from joining until the script leaves or `goOn` returns false.
/// `goOn` is called after each arrival, and after three seconds at the latest.
/// @param tap  sees the player's datagrams
ScriptedRun playScript(const client::RoomAddress& room, const std::string& name,
                       const std::vector<Action>& script, bool keepRecord,
                       const std::function<bool()>& goOn, client::Tap tap = {});

} // namespace drench::bots
