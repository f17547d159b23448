#pragma once

#include <cstdint>
#include <string_view>

namespace drench {

/// FNV-1a, 64 bits (Fowler, Noll, Vo): tells damage and change apart from sameness, but keeps
/// nobody from forging. Go on with `from` to add more bytes to a checksum.
constexpr std::uint64_t checksum(std::string_view bytes,
                                 std::uint64_t from = 14695981039346656037u) {
    for (const char byte : bytes)
        from = (from ^ static_cast<unsigned char>(byte)) * 1099511628211u;
    return from;
}

} // namespace drench
