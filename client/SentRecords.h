#pragma once

#include "client/Inputs.h"
#include "src/Player.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace drench::client {

/// Milliseconds on one clock of the caller's.
using Milliseconds = double;

/// A key or a view that went out.
struct SentRecord {
    Milliseconds sentAt = 0.0;
    bool isView = false;

    /// Of a key.
    int key = 0;
    bool isDown = false;

    /// Of a view.
    std::int32_t dx = 0;
    std::int32_t dy = 0;

    /// Whether it leaves `player` as it is: a key that is held, or released, already. A jump never
    /// counts as that, since the next tick may take the one that waits.
    bool changesNothing(const Player& player) const;

    /// Acts on a living player as the room does it.
    void actOn(Player& player) const;

    /// The record sent as `input` at a moment; nothing for words, and for keys outside keyIndex.
    static std::optional<SentRecord> of(const InputRecord& input, Milliseconds sentAt);

    /// The input, without a player's identifier.
    InputRecord input() const;
};

/// Sent records by their numbers, which count from 0 and stay when old records are forgotten.
class SentRecords {
  public:
    void add(const SentRecord& record) { records_.push_back(record); }
    void forgetBefore(std::uint64_t number);
    const SentRecord& operator[](std::uint64_t number) const;

    /// The first number kept, and the number that the next record will get.
    std::uint64_t begin() const { return first_; }
    std::uint64_t end() const { return first_ + records_.size(); }

  private:
    std::uint64_t first_ = 0;
    std::deque<SentRecord> records_;
};

} // namespace drench::client
