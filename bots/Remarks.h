#pragma once

#include "common/Chance.h"

#include <cstdint>
#include <optional>
#include <string>

namespace drench::bots {

/// What a player says, rarely: after a success, after being soaked twice in a row, or when it has
/// been silent for long. A remark fits a chat record.
class Remarks {
  public:
    explicit Remarks(Chance chance);

    /// Takes notice of the own points, once for each snapshot.
    void notePoints(std::int32_t points);

    /// The remark that is due, once.
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
