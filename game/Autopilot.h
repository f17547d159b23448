#pragma once

#include "bots/Bot.h"
#include "bots/Script.h"
#include "client/Session.h"

#include <atomic>
#include <functional>
#include <future>
#include <optional>
#include <vector>

namespace drench::game {

/// Plays besides or instead of the one at the window: a script, a bot, or both.
class Autopilot {
  public:
    Autopilot() = default;

    /// Gives up a chart that is being made.
    ~Autopilot() { goesOn_ = false; }
    Autopilot(const Autopilot&) = delete;
    Autopilot& operator=(const Autopilot&) = delete;

    /// Lets these inputs go to the room.
    void playScript(std::vector<bots::Action> script) { script_ = std::move(script); }

    /// Lets a bot of this skill play, from the next room on.
    void letBotPlay(double skill) { skill_ = skill; }

    /// A room let us in, or turns out to have another arena: a new bot plays there. It stands still
    /// until the arena is charted, in the background.
    /// @param map  must outlive this
    void enterArena(MapManager& map);

    /// Acts after a snapshot. Throws what charting the arena has thrown.
    /// @param shown  the state by which the bot decides, given ourselves in the snapshot
    void act(const client::Snapshot& snapshot, client::Session& session,
             const std::function<UpdateMessage(const PlayerUpdate& self)>& shown);

    /// Whether the script has asked to leave.
    bool hasLeft() const { return hasLeft_; }

  private:
    void act(const bots::Action& action, client::Session& session);
    void prepareBot();
    void chart();

    std::vector<bots::Action> script_;
    std::size_t acted_ = 0;
    bool hasLeft_ = false;

    /// Nothing unless a bot plays.
    std::optional<double> skill_;
    MapManager* map_ = nullptr;

    /// The map whose roads are known, or being charted.
    MapManager* charted_ = nullptr;
    std::optional<bots::Roadmap> roadmap_;
    std::optional<bots::Bot> bot_;
    std::atomic<bool> goesOn_ = true;
    std::future<std::optional<bots::Roadmap>> charting_;
};

} // namespace drench::game
