#pragma once

#include "bench/PlayedLife.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace drench::bench {

/// The lost records of one kind, and how they were made good. Milliseconds since the moment at
/// which their effect was due.
struct LossFigures {
    int lost = 0;

    /// Until the player's end knew; until the room had the effect after all.
    std::vector<double> noticed;
    std::vector<double> good;

    /// The same by records whose remedy came through: a lost remedy is a loss of its own.
    std::vector<double> goodAtOnce;
};

/// What the lives of players over one line gave.
struct LineFigures {
    std::string name;
    int lives = 0;
    double seconds = 0.0;
    std::uint64_t exact = 0;
    std::uint64_t close = 0;
    std::uint64_t unexplained = 0;
    std::uint64_t breaks = 0;
    std::vector<double> hypotheses;
    std::vector<double> microseconds;

    /// Milliseconds between the ticks, as the observer saw them: tells how busy the machine was.
    std::vector<double> gaps;

    /// World units. Of each frame, from the drawn eye to where the records known then, in the ticks
    /// in which they really acted, take it at the moment drawn.
    std::vector<double> eyes;

    /// World units. Of each record, from the body predicted for its tick to the body in the tick
    /// that really took it.
    std::vector<double> inputs;

    /// Of each record, the tick that really took it minus the predicted one.
    std::vector<double> ticksLate;

    LossFigures views;
    LossFigures keys;

    /// Records told of as lost that had acted.
    int wronglyTold = 0;

    /// Lives of which not every tick could be explained by somebody who sees all of them; only
    /// counts of snapshots come from these.
    std::vector<std::string> untold;

    std::uint64_t snapshots() const { return exact + close + unexplained; }
};

/// Adds a life. `delay` is the line's, in milliseconds each way.
void add(LineFigures& figures, const PlayedLife& life, MapManager& map, double delay);

/// A table in Markdown, JSON, and what plot-prediction.sh draws.
void printTable(std::ostream& out, const std::vector<LineFigures>& lines);
std::string jsonReport(const std::vector<LineFigures>& lines);
std::string plotColumns(const std::vector<LineFigures>& lines);

} // namespace drench::bench
