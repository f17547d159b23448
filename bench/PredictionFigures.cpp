#include "bench/PredictionFigures.h"

#include "bench/Statistics.h"
#include "client/Records.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string_view>
#include <variant>

namespace drench::bench {

namespace {

/// Milliseconds. What is lost in the end of a life may not be made good in it.
constexpr double tooLate = 1000.0;

bool isSame(const UpdateMessage& a, const UpdateMessage& b) {
    const auto bytesOf = [](const UpdateMessage& state) {
        return std::string_view(reinterpret_cast<const char*>(&state), sizeof state);
    };
    return bytesOf(a) == bytesOf(b);
}

/// For each snapshot taken, the tick in which the observer saw the same; nothing after a snapshot
/// that the observer never saw.
std::vector<std::size_t> observedTicks(const PlayedLife& life) {
    std::vector<std::size_t> ticks;
    std::size_t tick = life.firstSighting;
    for (const PlayedLife::Taking& taking : life.takings) {
        while (tick < life.observed.size() && !isSame(life.observed[tick], taking.state))
            ++tick;
        if (tick == life.observed.size())
            break;
        ticks.push_back(tick++ - life.firstSighting);
    }
    return ticks;
}

class Account {
  public:
    Account(const PlayedLife& life, const Truth& truth, MapManager& map)
        : life_(life), truth_(truth), actsIn_(truth.states.size()), ticks_(observedTicks(life)) {
        for (const auto& [number, tick] : truth.acted)
            actsIn_[tick].push_back(number);
        for (Player& state : states_ = truth.states)
            state.setMapMan(&map);
    }

    bool hasMatchedAll() const { return ticks_.size() == life_.takings.size(); }

    void addEyes(std::vector<double>& errors) const {
        for (const PlayedLife::Frame& frame : life_.frames) {
            const std::size_t from = ticks_[frame.taking];
            const auto shown = static_cast<std::size_t>(std::max(1.0, std::ceil(frame.drawnAhead)));
            if (from + shown >= states_.size())
                continue;
            Player player = states_[from];
            vec3 before;
            for (std::size_t tick = from + 1; tick <= from + shown; ++tick) {
                for (const std::uint64_t number : actsIn_[tick]) {
                    if (number < frame.recordsSent)
                        life_.records[number].actOn(player);
                }
                before = player.position;
                player.update(0.0f);
            }
            const double share = frame.drawnAhead - static_cast<double>(shown - 1);
            const vec3 eye = before + (player.position - before) * static_cast<float>(share);
            errors.push_back(static_cast<double>((frame.eye - eye).length()));
        }
    }

    void addInputs(LineFigures& figures) const {
        for (const auto& [number, tick] : truth_.acted) {
            const PlayedLife::Sending& sending = life_.sendings[number];
            if (!sending.isPredicted || !sending.isChange)
                continue;
            figures.inputs.push_back(
                static_cast<double>((sending.predicted - states_[tick].position).length()));
            figures.ticksLate.push_back(static_cast<double>(tick) -
                                        static_cast<double>(ticks_[sending.taking]) -
                                        static_cast<double>(sending.ticksAhead));
        }
    }

    void addLosses(LineFigures& figures) {
        matchLosses(figures);
        const double end = life_.sightings.back().at - tooLate;
        for (std::uint64_t number = 0; number < life_.records.end(); ++number) {
            const client::SentRecord& record = life_.records[number];
            if (hasActed(number) || !life_.sendings[number].isChange || dueAt(number) > end)
                continue;
            LossFigures& kind = record.isView ? figures.views : figures.keys;
            ++kind.lost;
            if (const auto loss = told_.find(number); loss != told_.end())
                kind.noticed.push_back(loss->second->at - dueAt(number));
            const std::optional<std::uint64_t> remedy =
                record.isView ? carrierThatActed(number) : nextOfKey(number);
            if (!remedy)
                continue;
            const double good = life_.sightings[truth_.acted.at(*remedy)].at - dueAt(number);
            kind.good.push_back(good);
            if (const auto loss = told_.find(number);
                loss != told_.end() && loss->second->carrier == *remedy)
                kind.goodAtOnce.push_back(good);
        }
    }

  private:
    bool hasActed(std::uint64_t number) const { return truth_.acted.contains(number); }
    double dueAt(std::uint64_t number) const { return life_.records[number].sentAt + truth_.delay; }

    bool isAlike(std::uint64_t number, const client::InputRecord& input) const {
        const client::SentRecord& record = life_.records[number];
        if (const auto* view = std::get_if<ViewMessage>(&input))
            return record.isView && record.dx == view->dx && record.dy == view->dy;
        const auto* key = std::get_if<KeyMessage>(&input);
        return key && !record.isView && record.key == key->key && record.isDown == (key->down != 0);
    }

    /// A loss that was told is the first one of such a record that was not told before.
    void matchLosses(LineFigures& figures) {
        for (const PlayedLife::Loss& loss : life_.losses) {
            std::uint64_t number = 0;
            while (number < life_.records.end() &&
                   (life_.records[number].sentAt > loss.at || hasActed(number) ||
                    told_.contains(number) || !isAlike(number, loss.record)))
                ++number;
            if (number < life_.records.end())
                told_[number] = &loss;
            else
                ++figures.wronglyTold;
        }
    }

    std::optional<std::uint64_t> carrierThatActed(std::uint64_t number) const {
        while (!hasActed(number)) {
            const auto loss = told_.find(number);
            if (loss == told_.end() || loss->second->carrier <= number)
                return std::nullopt;
            number = loss->second->carrier;
        }
        return number;
    }

    std::optional<std::uint64_t> nextOfKey(std::uint64_t number) const {
        const int key = life_.records[number].key;
        for (++number; number < life_.records.end(); ++number) {
            const client::SentRecord& record = life_.records[number];
            if (!record.isView && record.key == key && hasActed(number))
                return number;
        }
        return std::nullopt;
    }

    const PlayedLife& life_;
    const Truth& truth_;
    std::vector<Player> states_;
    std::vector<std::vector<std::uint64_t>> actsIn_;

    /// The index of the sighting of each taking.
    std::vector<std::size_t> ticks_;
    std::map<std::uint64_t, const PlayedLife::Loss*> told_;
};

} // namespace

void add(LineFigures& figures, const PlayedLife& life, MapManager& map, double delay) {
    ++figures.lives;
    figures.exact += life.statistics.exact;
    figures.close += life.statistics.close;
    figures.unexplained += life.statistics.unexplained;
    figures.breaks += life.statistics.breaks;
    for (const PlayedLife::Taking& taking : life.takings) {
        figures.hypotheses.push_back(static_cast<double>(taking.hypotheses));
        figures.microseconds.push_back(taking.microseconds);
    }
    if (life.sightings.empty()) {
        figures.untold.emplace_back("the observer saw no player");
        return;
    }
    figures.seconds += (life.sightings.back().at - life.sightings.front().at) / 1000.0;
    for (std::size_t tick = 1; tick < life.sightings.size(); ++tick)
        figures.gaps.push_back(life.sightings[tick].at - life.sightings[tick - 1].at);
    std::string problem;
    const std::optional<Truth> truth = testify(map, life.sightings, life.records, delay, problem);
    if (!truth) {
        figures.untold.push_back(problem);
        return;
    }
    Account account(life, *truth, map);
    if (!account.hasMatchedAll()) {
        figures.untold.emplace_back("the player took a snapshot that the observer missed");
        return;
    }
    account.addEyes(figures.eyes);
    account.addInputs(figures);
    account.addLosses(figures);
}

} // namespace drench::bench
