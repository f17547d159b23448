#pragma once

#include "bots/Script.h"
#include "client/Bodies.h"
#include "client/Session.h"
#include "common/GapHistogram.h"
#include "game/Capture.h"
#include "game/HeldActions.h"
#include "game/Match.h"
#include "game/Pacing.h"
#include "game/Scene.h"
#include "game/Settings.h"
#include "game/Staging.h"
#include "game/Turning.h"
#include "game/Window.h"
#include "game/render/Renderer.h"

#include <string>
#include <vector>

namespace drench::game {

/// All that lasts from frame to frame of a match, and the frame itself: from the window's events
/// and the room's snapshots to the picture.
class Frame {
  public:
    /// @param session  joining or playing
    /// @param map  the room's arena, and its surface; the map must outlive this
    Frame(Window& window, client::Session session, MapManager& map, const ArenaMesh& mesh,
          Settings settings);

    /// Lets these inputs go to the room besides one's own.
    void playScript(std::vector<bots::Action> script) { script_ = std::move(script); }

    /// Waits until the next frame is due, and makes it.
    void run();

    /// False once the window was closed or the room was lost.
    bool goesOn() const { return !isClosed_ && session_.isOpen(); }

    /// What ended the session, worded to follow the name of its room; empty if nothing did.
    const std::string& trouble() const { return trouble_; }

    /// Whether the room has let us in.
    bool hasJoined() const { return hasJoined_; }

    /// How long frames took from their first event to their last pixel.
    const GapHistogram& times() const { return times_; }

    /// Draws the last frame once more, for a picture of it, without showing it.
    void drawAgain();

  private:
    void waitUntilDue();
    void takeInputs();
    void press(const WindowEvents::Press& press);
    void serviceRoom(client::Time now);
    void take(const client::Event& event, client::Time now);
    void act(const ActionChange& change);
    void act(const bots::Action& action);
    void compose(client::Time now);

    Window& window_;
    client::Session session_;
    Settings settings_;
    Renderer renderer_;
    Pacing pacing_;

    HeldActions held_;
    Turning turning_;
    Capture capture_;

    std::vector<bots::Action> script_;
    std::size_t acted_ = 0;

    Match match_;
    client::Bodies bodies_;
    Staging staging_;
    client::Time opened_;
    Scene scene_;
    std::string trouble_;
    bool hasJoined_ = false;
    bool isClosed_ = false;
    GapHistogram times_;
};

} // namespace drench::game
