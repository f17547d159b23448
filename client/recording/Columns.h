#pragma once

#include "common/Files.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Values of one kind side by side, which zstd shrinks better than records one after the other.
// Numbers take seven bits in each byte, the lowest first; the highest bit says that more follow.

namespace drench::client {

inline void putByte(std::string& column, std::uint8_t byte) {
    column.push_back(static_cast<char>(byte));
}

inline void putNumber(std::string& column, std::uint64_t number) {
    for (; number >= 0x80; number >>= 7)
        putByte(column, static_cast<std::uint8_t>(number | 0x80));
    putByte(column, static_cast<std::uint8_t>(number));
}

/// Small numbers of either sign in few bytes: 0, -1, 1, -2 ... become 0, 1, 2, 3 ...
inline void putSigned(std::string& column, std::int64_t number) {
    putNumber(column,
              (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63));
}

/// Takes values from the front of a column. Throws InputError when it is at its end.
class ColumnReader {
  public:
    explicit ColumnReader(std::string_view column = {}) : left_(column) {}

    bool isEmpty() const { return left_.empty(); }

    std::string_view bytes(std::uint64_t count) {
        if (count > left_.size())
            throw InputError("a value is missing");
        const std::string_view taken = left_.substr(0, static_cast<std::size_t>(count));
        left_.remove_prefix(taken.size());
        return taken;
    }

    std::uint8_t byte() { return static_cast<std::uint8_t>(bytes(1).front()); }

    /// Also throws when the number does not fit into 64 bits.
    std::uint64_t number() {
        std::uint64_t number = 0;
        for (int shift = 0;; shift += 7) {
            const std::uint64_t next = byte();
            if (shift == 63 && next > 1)
                throw InputError("a number is too large");
            number |= (next & 0x7f) << shift;
            if (next < 0x80)
                return number;
        }
    }

    std::int64_t signedNumber() {
        const std::uint64_t folded = number();
        return static_cast<std::int64_t>((folded >> 1) ^ (~(folded & 1) + 1));
    }

  private:
    std::string_view left_;
};

} // namespace drench::client
