#pragma once

#include "arena/picture/Image.h"

namespace drench::game {

/// The lower left part of the framebuffer that is drawn into, as it is now.
arena::Image screenshot(int width, int height);

} // namespace drench::game
