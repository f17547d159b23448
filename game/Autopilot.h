#pragma once

#include "bots/Bot.h"
#include "bots/Script.h"
#include "client/Bodies.h"
#include "client/Session.h"

#include <optional>
#include <vector>

namespace drench::game {

/// Plays besides or instead of the one at the window: a script, a bot, or both.
class Autopilot {
  public:
    /// Lets these inputs go to the room.
    void playScript(std::vector<bots::Action> script) { script_ = std::move(script); }

    /// Lets a bot of this skill play, from the next room on.
    /// @param roadmap  must outlive this
    void letBotPlay(const bots::Roadmap& roadmap, double skill);

    /// A room let us in.
    void enterRoom();

    /// Acts after a snapshot that `bodies` has taken.
    /// @param ahead  see client::Bodies::shown()
    void act(const client::Snapshot& snapshot, client::Session& session, client::Bodies& bodies,
             client::Time now, bool ahead);

    /// Whether the script has asked to leave.
    bool hasLeft() const { return hasLeft_; }

  private:
    void act(const bots::Action& action, client::Session& session);

    std::vector<bots::Action> script_;
    std::size_t acted_ = 0;
    bool hasLeft_ = false;

    /// Null unless a bot plays.
    const bots::Roadmap* roadmap_ = nullptr;
    double skill_ = 0.0;
    std::optional<bots::Bot> bot_;
};

} // namespace drench::game
