#pragma once

#include "common/ChildProcess.h"
#include "tests/process/RemotePlayer.h"
#include "tests/process/ServerProcess.h"
#include "tests/process/ToolProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// A screen that nobody sees: an X server without a graphics card.
class Display {
  public:
    Display();

    /// For the variable DISPLAY: ":3".
    std::string name;

    /// Runs xdotool with these arguments, and fails the test if it fails. Returns what it prints.
    std::string xdotool(const std::string& arguments) const;

  private:
    TemporaryFolder folder_;
    std::optional<drench::ChildProcess> server_;
};

/// Somebody at a desk: a room, the real window in it, keys and a mouse, and another player who
/// watches through the room's own snapshots.
class Desk {
  public:
    static constexpr char player[] = "Ann";

    /// @param arguments  more of them for the window
    /// @param environment  of the window, as in windowCommand()
    explicit Desk(const std::string& arguments = "", const std::string& environment = "");

    /// Waits until the window plays, has the focus, and its player has landed.
    void settle();

    // Real events.
    void press(const std::string& key) { display.xdotool("keydown " + key); }
    void release(const std::string& key) { display.xdotool("keyup " + key); }
    void tap(const std::string& key) { display.xdotool("key " + key); }

    /// Moves the mouse by these counts.
    void moveMouse(int right, int down);
    void pressButton(int button) { display.xdotool("mousedown " + std::to_string(button)); }
    void releaseButton(int button) { display.xdotool("mouseup " + std::to_string(button)); }

    /// What the room says of the window's player; null when it is not there.
    const PlayerUpdate* seen() const;

    /// Watches until a snapshot satisfies the condition; false if none does in time.
    bool sees(const std::function<bool(const PlayerUpdate&)>& wanted, int milliseconds = patience);

    /// Watches until the player is not in the room any more; false if it stays.
    bool seesLeave(int milliseconds = patience);

    /// Watches until the player stands still.
    bool comesToRest();

    /// Waits until this line of chat of the window's player comes; false if it does not.
    bool hears(const std::string& words);

    /// The room ends, as when its host stops it.
    void endRoom() { server_.reset(); }

    /// The room is opened anew at the same port, and the watcher joins it.
    void openRoomAgain();

    /// What the window's settings file holds.
    std::string settingsFile() const;

    int port() const { return port_; }

    /// The window's own number on the display.
    std::string windowNumber() const;

    Display display;

  private:
    TemporaryFolder folder_;
    std::optional<ServerProcess> server_;
    int port_;
    RemotePlayer watcher_;

  public:
    ToolProcess window;
};

/// The words of a command that starts the window's program on a display, with its settings in a
/// folder; without a display if the name is empty.
/// @param environment  "NAME=VALUE" for more variables
std::string windowCommand(const std::string& display, const std::string& folder,
                          const std::string& arguments, const std::string& environment = "");
