#include "game/HeldActions.h"

#include <gtest/gtest.h>

using namespace drench::game;

namespace {

constexpr Input keyW{Input::Device::keyboard, 26};
constexpr Input arrowUp{Input::Device::keyboard, 82};
constexpr Input keyQ{Input::Device::keyboard, 20};
constexpr Input leftButton{Input::Device::mouse, 1};
constexpr Input leftControl{Input::Device::keyboard, 224};

constexpr ActionChange forwardBegins{Action::forward, true};
constexpr ActionChange forwardEnds{Action::forward, false};
constexpr ActionChange fireBegins{Action::fire, true};
constexpr ActionChange fireEnds{Action::fire, false};

class Holding : public testing::Test {
  protected:
    Bindings bindings;
    HeldActions held;

    std::optional<ActionChange> down(Input input) { return held.press(bindings, input, true); }
    std::optional<ActionChange> up(Input input) { return held.press(bindings, input, false); }
};

} // namespace

TEST_F(Holding, BeginAndEndWithTheirInput) {
    EXPECT_EQ(down(keyW), forwardBegins);
    EXPECT_TRUE(held.holds(Action::forward));
    EXPECT_EQ(down(keyW), std::nullopt) << "a repeat";
    EXPECT_EQ(up(keyW), forwardEnds);
    EXPECT_FALSE(held.holds(Action::forward));
    EXPECT_EQ(up(keyW), std::nullopt);
    EXPECT_EQ(down(keyQ), std::nullopt) << "bound to nothing";
    EXPECT_EQ(up(keyQ), std::nullopt);
}

TEST_F(Holding, LastUntilTheLastInputGoesUp) {
    EXPECT_EQ(down(keyW), forwardBegins);
    EXPECT_EQ(down(arrowUp), std::nullopt);
    EXPECT_EQ(up(keyW), std::nullopt);
    EXPECT_EQ(up(arrowUp), forwardEnds);
}

TEST_F(Holding, InputKeepsToItsActionUntilItGoesUp) {
    down(keyW);
    bindings.bind(Action::jump, keyW);
    EXPECT_EQ(up(keyW), forwardEnds);
    EXPECT_EQ(down(keyW), (ActionChange{Action::jump, true}));
}

TEST_F(Holding, ToggledFireBeginsAndEndsWithPresses) {
    held.setToggledFire(true);
    EXPECT_EQ(down(leftButton), fireBegins);
    EXPECT_EQ(up(leftButton), std::nullopt);
    EXPECT_TRUE(held.holds(Action::fire));
    EXPECT_EQ(down(leftButton), fireEnds);
    EXPECT_EQ(down(leftControl), std::nullopt) << "a second input of the same press";
    EXPECT_EQ(up(leftControl), std::nullopt);
    EXPECT_EQ(up(leftButton), std::nullopt);
    EXPECT_EQ(down(keyW), forwardBegins);
    EXPECT_EQ(up(keyW), forwardEnds) << "only fire is toggled";
}

TEST_F(Holding, ChangeOfToggledFireLeavesNothingFiring) {
    held.setToggledFire(true);
    down(leftButton);
    up(leftButton);
    EXPECT_EQ(held.setToggledFire(false), fireEnds);
    EXPECT_FALSE(held.holds(Action::fire));
    EXPECT_EQ(held.setToggledFire(true), std::nullopt);
    held.setToggledFire(false);
    down(leftButton);
    EXPECT_EQ(held.setToggledFire(true), fireEnds);
}

TEST_F(Holding, LossOfFocusLetsEverythingGo) {
    down(keyW);
    down(leftButton);
    EXPECT_EQ(held.loseFocus(), (std::vector{forwardEnds, fireEnds}));
    EXPECT_FALSE(held.holds(Action::forward));
    EXPECT_EQ(up(keyW), std::nullopt);
    EXPECT_EQ(down(arrowUp), std::nullopt) << "came with the focus";
    held.gainFocus();
    EXPECT_EQ(up(arrowUp), std::nullopt);
    EXPECT_EQ(down(arrowUp), forwardBegins);
}

TEST_F(Holding, MenuLetsEverythingGoToo) {
    held.setToggledFire(true);
    down(leftButton);
    down(keyW);
    EXPECT_EQ(held.releaseAll(), (std::vector{forwardEnds, fireEnds}));
    EXPECT_EQ(held.releaseAll(), std::vector<ActionChange>());
    EXPECT_EQ(up(leftButton), std::nullopt);
    EXPECT_EQ(down(leftButton), fireBegins);
}
