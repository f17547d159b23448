#include "bots/Skill.h"

#include <algorithm>

namespace drench::bots {

namespace {

struct Row {
    double Skill::*what;
    double beginner;
    double best;
};

// Levels in between are interpolated linearly.
constexpr Row rows[] = {
    {&Skill::reaction, 24.0, 9.0},       //
    {&Skill::perceptionDelay, 9.0, 5.0}, //
    {&Skill::memory, 400.0, 640.0},      //
    {&Skill::topSpeed, 20.0, 60.0},      //
    {&Skill::movement, 18.0, 9.0},       //
    {&Skill::correction, 18.0, 8.0},     //
    {&Skill::spread, 0.20, 0.06},        //
    {&Skill::wobble, 16.0, 3.0},         //
    {&Skill::pursuit, 0.55, 0.92},       //
    {&Skill::anticipation, 2.0, 4.0},    //
    {&Skill::caution, 0.2, 0.8},         //
    {&Skill::curiosity, 0.3, 0.62},      //
};

/// Ticks for which the gentlest players spare a newly returned one: four seconds.
constexpr double longestMercy = 250.0;

/// Players up to the first level are fully gentle, from the second level on not at all.
constexpr double gentlest = 0.5;
constexpr double merciless = 0.65;

} // namespace

Skill skillOf(double level) {
    const double share = std::clamp(level, 0.0, 1.0);
    Skill skill;
    for (const Row& row : rows)
        skill.*row.what = row.beginner + (row.best - row.beginner) * share;
    skill.mercy = longestMercy * std::clamp((merciless - share) / (merciless - gentlest), 0.0, 1.0);
    return skill;
}

} // namespace drench::bots
