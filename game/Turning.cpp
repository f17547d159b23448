#include "game/Turning.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace drench::game {

namespace {

/// The share of a stick's way that worn sticks rest within.
constexpr double deadZone = 0.2;

/// Shares of the way at which an axis counts as pressed and as released.
constexpr double pressedFrom = 2.0 / 3.0;
constexpr double releasedBelow = 1.0 / 3.0;

void add(double& sum, double counts, bool inverted) {
    if (!std::isfinite(counts))
        return;
    sum =
        std::clamp(sum + (inverted ? -counts : counts), -Turning::mostCounts, Turning::mostCounts);
}

int takeWhole(double& sum) {
    const double whole = std::trunc(sum);
    sum -= whole;
    return static_cast<int>(whole);
}

} // namespace

void Turning::moveMouse(double x, double y, double sensitivity, InvertedAxes inverted) {
    add(x_, x * sensitivity, inverted.x);
    add(y_, y * sensitivity, inverted.y);
}

void Turning::holdStick(double x, double y, double seconds, double sensitivity,
                        InvertedAxes inverted) {
    cutDeadZone(x, y);
    moveMouse(x, y, stickCountsPerSecond * seconds * sensitivity, inverted);
}

ViewCounts Turning::take() {
    return {takeWhole(x_), takeWhole(y_)};
}

void cutDeadZone(double& x, double& y) {
    const double way = std::hypot(x, y);
    if (!(way > deadZone)) {
        x = y = 0.0;
        return;
    }
    // The corners of a square stick lie beyond its rim.
    const double beyond = std::min((way - deadZone) / (1.0 - deadZone), 1.0);
    const double scale = beyond * beyond / way;
    x *= scale;
    y *= scale;
}

bool AxisButton::move(double share) {
    const bool down = down_ ? share >= releasedBelow : share > pressedFrom;
    return std::exchange(down_, down) != down;
}

} // namespace drench::game
