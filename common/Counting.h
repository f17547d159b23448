#pragma once

#include <cstddef>
#include <string>

namespace drench {

/// "1 place", "4 places", "0 places": the count and the singular word, with an s unless the count
/// is 1.
inline std::string counted(std::size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

} // namespace drench
