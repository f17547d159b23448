#pragma once

namespace drench {

/// The exit status of a tool whose command line, file or port cannot be used.
constexpr int notUsable = 2;

} // namespace drench
