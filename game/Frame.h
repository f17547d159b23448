#pragma once

#include "bots/Bot.h"
#include "bots/Script.h"
#include "client/Bodies.h"
#include "game/ArenaFinder.h"
#include "game/Arenas.h"
#include "game/Captions.h"
#include "game/Capture.h"
#include "game/Ears.h"
#include "game/FrameCosts.h"
#include "game/FrameTimes.h"
#include "game/HeldActions.h"
#include "game/Overlay.h"
#include "game/Pacing.h"
#include "game/Scene.h"
#include "game/Settings.h"
#include "game/SoundDevice.h"
#include "game/Staging.h"
#include "game/Turning.h"
#include "game/Visit.h"
#include "game/Window.h"
#include "game/render/Renderer.h"

#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace drench::game {

/// All that lasts from frame to frame, and the frame itself: from the window's events and the
/// room's snapshots to the picture.
class Frame {
  public:
    /// Called with the settings when the player has changed them; may throw InputError.
    using KeepSettings = std::function<void(const Settings&)>;

    /// @param arenas  those that rooms may play, the likeliest first; at least one; must outlive
    /// this
    /// @param mesh  the surface of the first
    Frame(Window& window, std::vector<KnownArena>& arenas, const ArenaMesh& mesh, Settings settings,
          KeepSettings keep);

    /// The way into a room. Without one, the player chooses.
    Visit& visit() { return visit_; }

    /// Shows a line at the top of the picture.
    void warn(const std::string& words) { overlay_.warn(words); }

    /// Lets these inputs go to the room besides one's own.
    void playScript(std::vector<bots::Action> script) { script_ = std::move(script); }

    /// Lets a bot of this skill play instead of the one at the window, from the next joining on.
    /// @param roadmap  must outlive this
    void letBotPlay(const bots::Roadmap& roadmap, double skill);

    /// Waits until the next frame is due, and makes it.
    void run();

    /// False once the window was closed.
    bool goesOn() const { return !isClosed_ && !overlay_.hasQuit(); }

    const FrameCosts& costs() const { return costs_; }

    /// Draws the last frame once more, for a picture of it, without showing it.
    void drawAgain();

  private:
    Look look() const;
    void waitUntilDue();
    void takeInputs();
    void press(const WindowEvents::Press& press);
    void takeFocus(bool focused);
    void releaseAll();
    void serviceRoom(client::Time now);
    void take(const client::Event& event, client::Session& session, client::Time now);
    void act(const ActionChange& change);
    void act(const bots::Action& action, client::Session& session);
    void beginJudging();
    void judgeArena(const client::Snapshot& snapshot);
    void changeArena();
    MapManager& map() { return arenas_[arena_].map; }
    void compose(client::Time now);
    void nameFigures();
    void sound(client::Time now);
    void drawOverlay(client::Time now);
    void applySettings();
    void keepSettings();

    Window& window_;
    std::vector<KnownArena>& arenas_;

    /// The arena shown, and the one whose surface is being made.
    std::size_t arena_ = 0;
    std::size_t nextArena_ = 0;
    std::future<ArenaMesh> nextMesh_;
    std::optional<ArenaFinder> finder_;

    /// The arenas in the finder's order.
    std::vector<std::size_t> judged_;
    bool isArenaUnknown_ = false;
    Settings settings_;
    KeepSettings keep_;
    Renderer renderer_;
    Overlay overlay_;
    Pacing pacing_;

    HeldActions held_;
    Turning turning_;
    Capture capture_;
    bool gameHadInput_ = false;
    bool isFocused_ = true;

    std::vector<bots::Action> script_;
    std::size_t acted_ = 0;

    /// Null unless a bot plays.
    const bots::Roadmap* roadmap_ = nullptr;
    double botSkill_ = 0.0;
    std::optional<bots::Bot> bot_;

    Visit visit_;
    std::optional<client::Bodies> bodies_;
    Staging staging_;
    std::optional<Ears> ears_;
    SoundDevice soundDevice_;
    bool saidSilence_ = false;
    Captions captions_;
    client::Time opened_;
    client::Time begin_;

    /// Seconds from the frame before.
    double sinceLast_ = 0.0;
    Scene scene_;
    bool isClosed_ = false;

    /// Since when the settings differ from those kept; nothing if they do not.
    std::optional<client::Time> changed_;
    FrameCosts costs_;
    FrameTimes latestTimes_;
};

} // namespace drench::game
