#pragma once

#include <cstdint>
#include <string_view>

namespace drench {

/// FNV-1a, 64 bits (Fowler, Noll, Vo): detects damage and change, but not forgery. Pass a checksum
/// as `from` to add more bytes to it.
constexpr std::uint64_t checksum(std::string_view bytes,
                                 std::uint64_t from = 14695981039346656037u) {
    for (const char byte : bytes)
        from = (from ^ static_cast<unsigned char>(byte)) * 1099511628211u;
    return from;
}

} // namespace drench
