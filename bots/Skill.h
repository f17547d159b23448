#pragma once

namespace drench::bots {

/// What a level of skill comes down to. Times are in ticks, 62 a second; angles in mouse counts,
/// 360 a radian.
struct Skill {
    // Eyes

    /// From coming into sight to being noticed, on average.
    double reaction = 0.0;

    /// How late the movements of somebody in sight are taken in.
    double perceptionDelay = 0.0;

    /// How long whoever is out of sight is remembered.
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

    /// Share of a target's movement that the hand follows without looking where it is off.
    double pursuit = 0.0;

    // Trigger

    /// How far ahead the trigger is pulled when the target is about to be crossed.
    double anticipation = 0.0;

    // Judgement

    /// Probability of taking cover when two are in sight, and of stepping aside when one is.
    double caution = 0.0;

    /// Share of the goals that are places long out of sight: beginners like to be where others are.
    double curiosity = 0.0;

    /// For how long it does not fire at somebody who has just returned and has not fired itself.
    double mercy = 0.0;
};

/// @param level  0 (a beginner) to 1 (the best that hands can do); beyond, as the nearer end
Skill skillOf(double level);

} // namespace drench::bots
