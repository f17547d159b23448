#pragma once

namespace drench::bots {

/// The parameters that a level of skill gives. Times are in ticks, 62 a second; angles in mouse
/// counts, 360 a radian.
struct Skill {
    // Eyes

    /// From coming into sight to being noticed, on average.
    double reaction = 0.0;

    /// The delay with which the movements of a player in sight are taken in.
    double perceptionDelay = 0.0;

    /// The time for which a player out of sight is remembered.
    double memory = 0.0;

    // Hand

    /// The fastest turn, per tick.
    double topSpeed = 0.0;

    /// The shortest movement, and the pause before it is corrected by another one.
    double movement = 0.0;
    double correction = 0.0;

    /// Standard deviation of where a movement ends, as a share of its length.
    double spread = 0.0;

    /// Standard deviation of the unsteadiness of a hand at rest.
    double wobble = 0.0;

    /// The share of a target's movement that the hand follows without seeing its own error.
    double pursuit = 0.0;

    // Trigger

    /// The time by which the trigger is pulled before the view crosses the target.
    double anticipation = 0.0;

    // Judgement

    /// Probability of taking cover with two enemies in sight, and of stepping aside with one.
    double caution = 0.0;

    /// Share of the goals that are places long out of sight. Beginners prefer places where others
    /// are.
    double curiosity = 0.0;

    /// The time for which it does not fire at a player who has just returned and has not fired
    /// since.
    double mercy = 0.0;
};

/// @param level  0 (a beginner) to 1 (the best that hands can do); values beyond count as the
/// nearer end
Skill skillOf(double level);

} // namespace drench::bots
