#pragma once

#include "tests/process/RemotePlayer.h"
#include "tests/process/ServerProcess.h"
#include "tests/process/ToolProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/window/Display.h"

#include <functional>
#include <optional>
#include <string>
#include <thread>

/// Somebody at a desk: a room, the real window in it, keys and a mouse, and another player who
/// watches through the room's own snapshots.
class Desk {
  public:
    static constexpr char player[] = "Ann";
    static constexpr char watcher[] = "Eve";

    /// What a desk is to be besides the usual.
    struct Plan {
        /// Of the window.
        std::string size = "480x270";

        /// More arguments for the window.
        std::string arguments = {};

        /// More settings, in TOML.
        std::string settings = {};

        /// More variables for the window: "NAME=VALUE NAME=VALUE".
        std::string environment = {};
    };

    Desk() : Desk(Plan()) {}
    explicit Desk(const Plan& plan);

    /// Waits until the window plays, has the focus, and its player has landed.
    void settle();

    // Real events.
    void press(const std::string& key) { display.xdotool("keydown " + key); }
    void release(const std::string& key) { display.xdotool("keyup " + key); }
    void tap(const std::string& key);
    void type(const std::string& text);

    /// Moves the mouse by these counts.
    void moveMouse(int right, int down);
    void pressButton(int button) { display.xdotool("mousedown " + std::to_string(button)); }
    void releaseButton(int button) { display.xdotool("mouseup " + std::to_string(button)); }

    /// Moves the mouse until the window has it and turns the player; false if it never does.
    bool turnsAtLast();

    /// Puts the pointer there and clicks.
    void click(Pixel place);

    /// Turns the player with the mouse until it looks exactly at the place; false if it does not.
    bool aimAt(vec3 place);

    /// What the room says of the window's player; null when it is not there.
    const PlayerUpdate* seen() const;

    /// What the room says of the watcher.
    const PlayerUpdate& seenWatcher() const { return *eve_->seen(eve_->id()); }

    /// Watches until a snapshot satisfies the condition; false if none does in time.
    bool sees(const std::function<bool(const PlayerUpdate&)>& wanted, int milliseconds = patience);

    /// Watches until the player is not in the room any more; false if it stays.
    bool seesLeave(int milliseconds = patience);

    /// Watches until the player stands still and looks one way.
    bool comesToRest();

    /// Waits until this line of chat of the window's player comes, if it has not come before; false
    /// if it does not.
    bool hears(const std::string& words);

    /// The watcher walks off until it is that far from the player.
    void keepWatcherAway(float distance);

    /// The room ends, as when its host stops it.
    void endRoom();

    /// The room is opened anew at the same port, and the watcher joins it.
    void openRoomAgain();

    /// The window's own number on the display.
    std::string windowNumber() const;

    /// What the window's settings file holds.
    std::string settingsFile() const { return readFile(folder_.path + "/drench/settings.toml"); }

    Display display;

  private:
    void beginWatching();
    void catchUp();

    TemporaryFolder folder_;
    int port_;
    std::optional<ServerProcess> server_;
    std::optional<RemotePlayer> eve_;

    /// Keeps the watcher in the room, however long a test does something else.
    std::jthread signsOfLife_;

  public:
    ToolProcess window;
};

/// The words of a command that starts the window's program on a display, with its settings in a
/// folder; without a display if the name is empty.
/// @param environment  more variables
std::string windowCommand(const std::string& display, const std::string& folder,
                          const std::string& arguments, const std::string& environment = "");

/// Radians from the first direction to the second as seen from above, positive to the right.
double turnRight(vec3 from, vec3 to);
