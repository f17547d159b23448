#pragma once

#include "common/GapHistogram.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

namespace drench {

/// The number, or null if there is none.
inline nlohmann::ordered_json jsonOf(std::optional<double> value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}

/// The median, the 99th percentile and the longest, in milliseconds; null without gaps.
inline nlohmann::ordered_json jsonOf(const GapHistogram& gaps) {
    return {{"p50", jsonOf(gaps.percentile(typical))},
            {"p99", jsonOf(gaps.percentile(nearlyAll))},
            {"max", jsonOf(gaps.longest())}};
}

/// Writes the object over several lines, and an end of line. Names of files, hosts and players are
/// bytes and need not be UTF-8: invalid bytes are replaced.
inline void writeJson(std::ostream& out, const nlohmann::ordered_json& json) {
    out << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

} // namespace drench
