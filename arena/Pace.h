#pragma once

namespace drench::arena {

/// How fast players move in flight, at most.
enum class Pace {
    /// Forward and sideways at once: 8.5 world units a tick.
    ordinary,

    /// 12 units a tick: a quarter turn in one view report leaves the strafe vector pointing where
    /// the view does.
    flicked
};

} // namespace drench::arena
