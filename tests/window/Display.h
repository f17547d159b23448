#pragma once

#include "arena/picture/Image.h"
#include "common/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <optional>
#include <string>

/// A place on a screen in pixels: to the right and down from its left upper corner.
struct Pixel {
    int x = 0;
    int y = 0;
};

/// A screen that nobody sees: an X server without a graphics card.
class Display {
  public:
    static constexpr int width = 1280;
    static constexpr int height = 720;

    Display();

    /// For the variable DISPLAY: ":3".
    std::string name;

    /// Runs xdotool with these arguments, and fails the test if it fails. Returns what it prints.
    std::string xdotool(const std::string& arguments) const;

    /// What the screen shows there now.
    drench::arena::Colour colourAt(Pixel place) const;

  private:
    TemporaryFolder folder_;
    std::optional<drench::ChildProcess> server_;
};

/// Waits until the condition holds; false if it does not in time.
bool waitUntil(const std::function<bool()>& holds);
