#include "game/Gamepad.h"

#include <gtest/gtest.h>

using namespace drench::game;

namespace {

class Pad : public testing::Test {
  protected:
    Gamepad pad;

    /// What an axis at this place presses: "+32" for an input that goes down, "-32" for one that
    /// goes up.
    std::string move(int axis, int place) {
        SDL_Event event = {};
        event.type = SDL_CONTROLLERAXISMOTION;
        event.caxis.axis = static_cast<Uint8>(axis);
        event.caxis.value = static_cast<Sint16>(place);
        return take(event);
    }

    std::string take(const SDL_Event& event) {
        std::vector<WindowEvents::Press> presses;
        pad.take(event, presses);
        std::string words;
        for (const WindowEvents::Press& press : presses) {
            EXPECT_EQ(press.input.device, Input::Device::gamepad);
            words += (press.down ? "+" : "-") + std::to_string(press.input.number);
        }
        return words;
    }
};

} // namespace

TEST_F(Pad, ButtonsGoDownAndUp) {
    SDL_Event event = {};
    event.type = SDL_CONTROLLERBUTTONDOWN;
    event.cbutton.button = SDL_CONTROLLER_BUTTON_X;
    EXPECT_EQ(take(event), "+2");
    event.type = SDL_CONTROLLERBUTTONUP;
    EXPECT_EQ(take(event), "-2");
}

TEST_F(Pad, TheLeftStickPressesFourInputsAndPassesFromOneSideToTheOther) {
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_LEFTY, -32768), "+34") << "up";
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_LEFTY, 32767), "+35-34") << "down";
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_LEFTY, 0), "-35");
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_LEFTX, -30000), "+36") << "left";
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_LEFTX, 30000), "+37-36") << "right";
}

TEST_F(Pad, ATrembleNearTheMiddlePressesNothing) {
    for (const int place : {3000, -3000, 9000})
        EXPECT_EQ(move(SDL_CONTROLLER_AXIS_LEFTX, place), "");
}

TEST_F(Pad, TriggersArePressedOnceOnTheirWay) {
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_TRIGGERRIGHT, 16000), "");
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_TRIGGERRIGHT, 30000), "+33");
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_TRIGGERRIGHT, 16000), "");
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_TRIGGERRIGHT, 2000), "-33");
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_TRIGGERLEFT, 32767), "+32");
}

TEST_F(Pad, TheRightStickIsAPlaceAndPressesNothing) {
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_RIGHTX, 32767), "");
    EXPECT_EQ(move(SDL_CONTROLLER_AXIS_RIGHTY, -16384), "");
    EXPECT_DOUBLE_EQ(pad.stickX(), 1.0);
    EXPECT_NEAR(pad.stickY(), -0.5, 1e-3);
}

TEST_F(Pad, WhatWasHeldOnAPadThatIsPulledOutGoesUp) {
    move(SDL_CONTROLLER_AXIS_LEFTY, -32768);
    move(SDL_CONTROLLER_AXIS_RIGHTX, 32767);
    SDL_Event event = {};
    event.type = SDL_CONTROLLERDEVICEREMOVED;
    const std::string released = take(event);
    EXPECT_EQ(released.find("-34"), 0u) << released;
    EXPECT_EQ(released.find('+'), std::string::npos) << released;
    EXPECT_NE(released.find("-" + std::to_string(SDL_CONTROLLER_BUTTON_A)), std::string::npos);
    EXPECT_DOUBLE_EQ(pad.stickX(), 0.0);
}
