#pragma once

#include <cstdio>
#include <optional>
#include <string>

namespace drench {

/// The number with this many digits behind the point: "16.1". An absent value gives "-".
inline std::string decimals(std::optional<double> value, int digits) {
    if (!value)
        return "-";
    char text[512];
    std::snprintf(text, sizeof text, "%.*f", digits, *value);
    return text;
}

} // namespace drench
