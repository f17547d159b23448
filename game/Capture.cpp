#include "game/Capture.h"

namespace drench::game {

void Capture::setFocus(bool focused) {
    if (focused && !focused_)
        released_ = false;
    focused_ = focused;
}

bool Capture::click() {
    const bool captures = focused_ && !menuOpen_ && released_;
    if (captures)
        released_ = false;
    return captures;
}

} // namespace drench::game
