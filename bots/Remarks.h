#pragma once

#include "common/Chance.h"

#include <cstdint>
#include <optional>
#include <string>

namespace drench::bots {

/// A player's rare chat: after a success, after two soakings in a row, or after a long silence. A
/// remark fits a chat record.
class Remarks {
  public:
    explicit Remarks(Chance chance);

    /// Takes notice of the player's own points, once for each snapshot.
    void notePoints(std::int32_t points);

    /// The remark that is due; a second call returns nothing.
    std::optional<std::string> take();

  private:
    Chance chance_;
    std::int32_t points_ = 0;
    int soakedInARow_ = 0;
    long tick_ = 0;
    long silentUntil_;
    long boredAt_;
    std::optional<std::string> due_;

    void mayRemark(double probability, const char* text);
};

} // namespace drench::bots
