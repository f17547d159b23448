#include "bots/Tally.h"

#include "client/Records.h"
#include "src/Collisions.h"

#include <algorithm>
#include <cmath>

namespace drench::bots {

std::optional<double> Tally::accuracy() const {
    if (bursts == 0)
        return std::nullopt;
    return static_cast<double>(burstsThatSoaked) / static_cast<double>(bursts);
}

void Tally::add(const Tally& other) {
    joined += other.joined;
    soaks += other.soaks;
    deaths += other.deaths;
    bursts += other.bursts;
    burstsThatSoaked += other.burstsThatSoaked;
    distance += other.distance;
    snapshots += other.snapshots;
    snapshotsMissed += other.snapshotsMissed;
    gaps.add(other.gaps);
}

std::optional<double> upperMedian(std::vector<double> values) {
    if (values.empty())
        return std::nullopt;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Scorer::join() {
    ++tally_.joined;
    missedBefore_ = tally_.snapshotsMissed;
    last_.reset();
    burstHasSoaked_ = false;
}

void Scorer::see(const PlayerUpdate& self, std::uint64_t missed, client::Time arrival) {
    ++tally_.snapshots;
    tally_.snapshotsMissed = missedBefore_ + missed;
    const bool dead = client::isSoaked(self);
    if (last_) {
        const bool died = dead && !last_->dead;
        tally_.deaths += died;
        const float step = distanceVec3(last_->position, self.position);
        // A hostile room may send NaN or infinities.
        if (!dead && !last_->dead && std::isfinite(step))
            tally_.distance += step;
        tally_.gaps.add(arrival - last_->arrival);
        countSoaks(self, died);
    } else {
        tally_.bursts += self.shooting;
    }
    last_ = {self.position, self.points, self.shooting, dead, arrival};
}

void Scorer::countSoaks(const PlayerUpdate& self, bool died) {
    const long soaks = long{self.points} - last_->points + died;
    tally_.soaks += soaks;
    // Points show one snapshot after the shot, so they belong to the burst of the last snapshot. If
    // snapshots are missing, they may belong to a burst that has begun since, or that no snapshot
    // showed.
    const bool begins = self.shooting && !last_->shooting;
    const bool unseen = soaks > 0 && !self.shooting && !last_->shooting;
    if (begins || unseen) {
        ++tally_.bursts;
        burstHasSoaked_ = false;
    }
    if (soaks > 0 && !burstHasSoaked_) {
        ++tally_.burstsThatSoaked;
        burstHasSoaked_ = true;
    }
}

} // namespace drench::bots
