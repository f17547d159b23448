#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

/// Reads a fuzzer's input from front to back; behind its end everything is 0.
class Bytes {
  public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    bool isEmpty() const { return left_ == 0; }

    template<class Value>
    Value next() {
        Value value{};
        const std::size_t length = std::min(sizeof value, left_);
        if (length > 0)
            std::memcpy(static_cast<void*>(&value), data_, length);
        skip(length);
        return value;
    }

    /// The next bytes, fewer if fewer are left.
    std::string text(std::size_t length) {
        length = std::min(length, left_);
        std::string bytes;
        if (length > 0)
            bytes.assign(reinterpret_cast<const char*>(data_), length);
        skip(length);
        return bytes;
    }

  private:
    void skip(std::size_t length) {
        data_ += length;
        left_ -= length;
    }

    const std::uint8_t* data_;
    std::size_t left_;
};
