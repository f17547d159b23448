#pragma once

#include "game/Turning.h"
#include "game/WindowEvents.h"

#include <SDL.h>
#include <array>
#include <memory>
#include <vector>

namespace drench::game {

/// The gamepads that are plugged in, taken for one: buttons, triggers and the left stick as inputs
/// that go down and up, the right stick as a place.
class Gamepad {
  public:
    /// Opens and closes gamepads as they come and go, and adds what was pressed.
    void take(const SDL_Event& event, std::vector<WindowEvents::Press>& presses);

    /// Where the right stick stands, -1 to 1 each, right and down positive, with no dead zone cut.
    double stickX() const { return stickX_; }
    double stickY() const { return stickY_; }

  private:
    struct Close {
        void operator()(SDL_GameController* pad) const { SDL_GameControllerClose(pad); }
    };

    void move(Uint8 axis, Sint16 place, std::vector<WindowEvents::Press>& presses);
    void press(int input, double share, std::vector<WindowEvents::Press>& presses);
    void releaseAxes(std::vector<WindowEvents::Press>& presses);

    std::vector<std::unique_ptr<SDL_GameController, Close>> open_;
    double stickX_ = 0.0;
    double stickY_ = 0.0;

    /// Of the inputs from padInput::leftTrigger on.
    std::array<AxisButton, padInput::count - padInput::leftTrigger> axisButtons_;
};

} // namespace drench::game
