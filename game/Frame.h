#pragma once

#include "game/Autopilot.h"
#include "game/Captions.h"
#include "game/FrameCosts.h"
#include "game/FrameTimes.h"
#include "game/HeldActions.h"
#include "game/Overlay.h"
#include "game/Pacing.h"
#include "game/Recorder.h"
#include "game/Scene.h"
#include "game/Screening.h"
#include "game/Senses.h"
#include "game/Settings.h"
#include "game/ShownArena.h"
#include "game/SoundDevice.h"
#include "game/Turning.h"
#include "game/Visit.h"
#include "game/Window.h"
#include "game/render/Renderer.h"

#include <functional>
#include <future>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace drench::game {

/// All that lasts from frame to frame, and the frame itself: from the window's events and the
/// room's snapshots to the picture.
class Frame {
  public:
    /// Called with the settings when the player has changed them; may throw InputError.
    using KeepSettings = std::function<void(const Settings&)>;

    Frame(Window& window, ShownArena& arena, Settings settings, KeepSettings keep);

    /// Gives up the recording that is being opened.
    ~Frame() { stopOpening_.request_stop(); }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    /// The way into a room. Without one, the player chooses.
    Visit& visit() { return visit_; }

    /// Shows a line at the top of the picture.
    void warn(const std::string& words) { overlay_.warn(words); }

    /// Who plays besides or instead of the one at the window.
    Autopilot& autopilot() { return autopilot_; }

    /// Shows a recorded match, until the player stops that.
    void watch(OpenedRecording opened);

    /// What is watched; null for nothing.
    Screening* screening() { return screening_ ? &*screening_ : nullptr; }

    /// Waits until the next frame is due, and makes it.
    void run();

    /// False once the window was closed.
    bool goesOn() const { return !isClosed_ && !overlay_.hasQuit() && !autopilot_.hasLeft(); }

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
    void noteRoom(client::Time now);
    void changeArena();
    void record(Action action, client::Time now);
    void changeScreening();
    void openChosenRecording();
    void takeOpenedRecording();
    void compose(client::Time now);
    void sound(client::Time now);
    void drawOverlay(client::Time now);
    void applySettings();
    void keepSettings();

    Window& window_;
    ShownArena& arena_;
    Settings settings_;
    KeepSettings keep_;
    Renderer renderer_;
    Overlay overlay_;
    Pacing pacing_;

    HeldActions held_;
    Turning turning_;
    bool gameHadInput_ = false;
    bool isFocused_ = false;

    Recorder recorder_;
    Visit visit_;
    Autopilot autopilot_;
    Senses senses_;

    /// What is watched, what is being opened, and the file that was chosen to be opened next.
    std::optional<Screening> screening_;
    std::future<OpenedRecording> opening_;
    std::stop_source stopOpening_;
    std::string chosenRecording_;
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
