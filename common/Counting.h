#pragma once

#include <cstddef>
#include <string>

namespace drench {

/// "1 place", "4 places", "0 places": the count and the word for one thing, with an s unless it is
/// one.
inline std::string counted(std::size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

} // namespace drench
