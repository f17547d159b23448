#include "game/Figures.h"

#include "game/Liveries.h"
#include "game/WaterGun.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>
#include <glm/gtc/matrix_transform.hpp>

namespace drench::game {

namespace {

using arena::Colour;
using glm::mat4;
using glm::vec3;

// A figure's local space: x to its left, y up, z ahead, from the middle of the body. Its parts add
// up to the body's height from the soles at -75 to the top of its headgear at 75.
constexpr float sole = -75.0f;
constexpr float hip = -30.0f;
constexpr float shoulder = 12.0f;
constexpr float chin = 18.0f;
constexpr float crown = 52.0f;
constexpr float top = 75.0f;

constexpr float thigh = 21.0f;
constexpr float legWidth = 14.0f;
constexpr float legApart = 9.0f;

/// The gun's grip turns up and down about this point, on the right.
constexpr vec3 gunPivot{-9.0f, 5.0f, 2.0f};
constexpr vec3 gunAhead{0.0f, -2.0f, 5.0f};

/// Radians that a leg swings to each side of the vertical at full stride.
constexpr float swing = 0.62f;

/// Radians. Hips turn towards the way so far at most, and legs go backwards on ways that are
/// further from the view: to the side one goes forwards.
constexpr float mostTurn = 1.1f;
constexpr float backwards = 1.75f;

/// A head nods less than its eyes look up.
constexpr float nod = 0.55f;

constexpr Colour dark{44, 44, 54};
constexpr Colour shoe{240, 240, 236};
constexpr Colour cheek{244, 152, 132};

struct Angles {
    float yaw;
    float pitch;
};

Angles anglesOf(vec3 direction) {
    const float level = std::hypot(direction.x, direction.z);
    if (level == 0.0f && direction.y == 0.0f)
        return {0.0f, 0.0f};
    return {std::atan2(direction.x, direction.z), std::atan2(direction.y, level)};
}

mat4 turned(const mat4& place, vec3 about, vec3 axis, float angle) {
    return glm::translate(glm::rotate(glm::translate(place, about), angle, axis), -about);
}

constexpr vec3 leftward{1.0f, 0.0f, 0.0f};
constexpr vec3 upward{0.0f, 1.0f, 0.0f};

mat4 placeOf(const FigurePose& pose) {
    return glm::rotate(glm::translate(mat4(1.0f), pose.position), anglesOf(pose.direction).yaw,
                       upward);
}

mat4 gunPlace(const mat4& body, float pitch) {
    return glm::translate(turned(body, gunPivot, leftward, -pitch), gunPivot + gunAhead);
}

/// How legs go along the way of a body that looks elsewhere.
struct Gait {
    /// Radians to the left that the hips are turned.
    float turn = 0.0f;

    /// As FigurePose::walkPhase; runs back in steps backwards.
    float phase = 0.0f;
    float stride = 0.0f;
};

Gait gaitOf(const FigurePose& pose) {
    const float stride = glm::length(pose.way);
    const float view = anglesOf(pose.direction).yaw;
    const float turn =
        std::remainder(std::atan2(pose.way.x, pose.way.y) - view, glm::two_pi<float>());
    const bool isBackwards = std::abs(turn) > backwards;
    const float along =
        isBackwards ? std::remainder(turn + glm::pi<float>(), glm::two_pi<float>()) : turn;
    return {stride * std::clamp(along, -mostTurn, mostTurn),
            isBackwards ? -pose.walkPhase : pose.walkPhase, stride};
}

/// The bend of a leg: forward at the hip, back at the knee.
struct Bend {
    float hip = 0.0f;
    float knee = 0.0f;
};

/// @param side  1 for the left leg, -1 for the right one
Bend bendOf(const Gait& gait, bool inAir, float side) {
    if (inAir)
        return side > 0.0f ? Bend{1.15f, 1.75f} : Bend{0.6f, 1.7f};
    const float angle = gait.phase * glm::pi<float>();
    const float forward = side * std::sin(angle);
    // The knee bends while its leg comes forward.
    const float comes = std::max(0.0f, side * std::cos(angle));
    return {gait.stride * swing * forward, gait.stride * 0.95f * comes};
}

void addLeg(Solids& solids, const mat4& body, float side, Bend bend, Colour shorts) {
    const vec3 joint(side * legApart, hip, 0.0f);
    const mat4 upper = turned(body, joint, leftward, -bend.hip);
    const float half = 0.5f * legWidth;
    addBlock(solids, upper, joint + vec3(-half, -thigh, -half), joint + vec3(half, 3.0f, half),
             shorts);
    const vec3 knee = joint - vec3(0.0f, thigh, 0.0f);
    const mat4 lower = turned(upper, knee, leftward, bend.knee);
    const float slim = half - 1.0f;
    addBlock(solids, lower, {knee.x - slim, sole + 8.0f, -slim},
             {knee.x + slim, knee.y + 2.0f, slim}, skinColour);
    addBlock(solids, lower, {knee.x - half, sole, -half}, {knee.x + half, sole + 9.0f, half + 5.0f},
             shoe);
}

/// Adds both legs, and returns how far the body has sunk between them: the lower foot stands on the
/// ground.
float addLegs(Solids& solids, const mat4& body, const FigurePose& pose, Colour shorts) {
    const std::size_t first = solids.vertices.size();
    const Gait gait = gaitOf(pose);
    const mat4 hips = pose.inAir ? body : glm::rotate(body, gait.turn, upward);
    for (const float side : {1.0f, -1.0f})
        addLeg(solids, hips, side, bendOf(gait, pose.inAir, side), shorts);
    if (pose.inAir)
        return 0.0f;
    float lowest = pose.position.y;
    for (std::size_t i = first; i < solids.vertices.size(); ++i)
        lowest = std::min(lowest, solids.vertices[i].position.y);
    const float sunk = lowest - (pose.position.y + sole);
    for (std::size_t i = first; i < solids.vertices.size(); ++i)
        solids.vertices[i].position.y -= sunk;
    return sunk;
}

void addTorso(Solids& solids, const mat4& body, Colour colour) {
    addBlock(solids, body, {-17.0f, hip - 2.0f, -10.0f}, {17.0f, hip + 9.0f, 10.0f},
             darker(colour, shadeShare));
    addBlock(solids, body, {-18.0f, hip + 8.0f, -10.5f}, {18.0f, chin, 10.5f}, colour);
    addBlock(solids, body, {-18.3f, -8.0f, -10.8f}, {18.3f, -1.0f, 10.8f}, whiteColour);
    // The tank on the back.
    for (const float side : {-7.0f, 7.0f})
        addTube(solids, glm::rotate(body, -glm::half_pi<float>(), leftward), {side, 15.5f, -20.0f},
                33.0f, 6.2f, 6.2f, tankColour);
}

void addHeadgear(Solids& solids, const mat4& head, const Livery& livery) {
    const Colour colour = livery.colour;
    const Colour shade = darker(colour, shadeShare);
    switch (livery.headgear) {
    case Headgear::fin:
        addBlock(solids, head, {-17.0f, crown - 7.0f, -16.5f}, {17.0f, crown + 2.0f, 16.5f}, shade);
        addBlock(solids, head, {-3.5f, crown, -18.0f}, {3.5f, top - 11.0f, 13.0f}, colour);
        addBlock(solids, head, {-3.5f, top - 12.0f, -18.0f}, {3.5f, top - 5.0f, 5.0f}, colour);
        addBlock(solids, head, {-3.5f, top - 6.0f, -18.0f}, {3.5f, top, -4.0f}, colour);
        break;
    case Headgear::hat:
        addBlock(solids, head, {-24.5f, crown - 1.0f, -24.5f}, {24.5f, crown + 3.0f, 24.5f},
                 colour);
        addBlock(solids, head, {-15.0f, crown + 3.0f, -15.0f}, {15.0f, crown + 8.0f, 15.0f},
                 yellowColour);
        addBlock(solids, head, {-15.0f, crown + 8.0f, -15.0f}, {15.0f, top - 2.0f, 15.0f}, colour);
        break;
    case Headgear::eyes:
        addBlock(solids, head, {-17.0f, crown - 7.0f, -16.5f}, {17.0f, crown + 3.0f, 16.5f},
                 colour);
        for (const float side : {-10.0f, 10.0f}) {
            addBlock(solids, head, {side - 7.5f, crown, -6.0f}, {side + 7.5f, top - 3.0f, 9.0f},
                     colour);
            addBlock(solids, head, {side - 5.0f, crown + 6.0f, 8.0f},
                     {side + 5.0f, top - 6.0f, 10.5f}, whiteColour);
            addBlock(solids, head, {side - 2.0f, crown + 8.0f, 9.0f},
                     {side + 2.0f, top - 9.0f, 11.5f}, dark);
        }
        break;
    case Headgear::cone:
        addBlock(solids, head, {-17.0f, crown - 6.0f, -16.5f}, {17.0f, crown + 1.0f, 16.5f}, shade);
        addTube(solids, glm::rotate(head, -glm::half_pi<float>(), leftward), {0.0f, 0.0f, crown},
                12.0f, 14.0f, 7.5f, colour);
        addTube(solids, glm::rotate(head, -glm::half_pi<float>(), leftward),
                {0.0f, 0.0f, crown + 11.0f}, 8.0f, 8.2f, 2.5f, whiteColour);
        addBlock(solids, head, {-4.0f, top - 7.0f, -4.0f}, {4.0f, top, 4.0f}, yellowColour);
        break;
    }
}

void addHead(Solids& solids, const mat4& body, const FigurePose& pose, float pitch,
             const Livery& livery) {
    // Tilting about its middle, a head with its gear would rise above the body's top.
    const float tilt = std::clamp(nod * pitch, -0.35f, 0.35f);
    const vec3 neck(0.0f, chin, 0.0f);
    const mat4 head = turned(body, neck, leftward, -tilt);
    addBlock(solids, head, {-16.0f, chin, -15.5f}, {16.0f, crown - 1.0f, 15.5f}, skinColour);
    addBlock(solids, head, {-17.0f, chin + 7.0f, -17.0f}, {17.0f, crown - 2.0f, -2.0f},
             livery.hair);
    const float eyes = chin + 19.0f;
    for (const float side : {-7.5f, 7.5f}) {
        addBlock(solids, head, {side - 4.5f, eyes - 5.0f, 15.0f}, {side + 4.5f, eyes + 6.0f, 16.2f},
                 whiteColour);
        addBlock(solids, head, {side - 2.5f, eyes - 3.0f + 5.0f * tilt, 16.0f},
                 {side + 2.5f, eyes + 3.5f + 5.0f * tilt, 16.9f}, dark);
        addBlock(solids, head, {side * 1.6f - 2.5f, chin + 8.5f, 15.0f},
                 {side * 1.6f + 2.5f, chin + 11.5f, 15.8f}, cheek);
    }
    // Everybody smiles, and whoever fires laughs.
    constexpr Colour lips{142, 48, 48};
    const float mouth = pose.shooting ? 6.0f : 2.5f;
    addBlock(solids, head, {-5.5f, chin + 8.0f - mouth, 15.0f}, {5.5f, chin + 8.0f, 16.0f}, lips);
    for (const float side : {-6.5f, 6.5f})
        addBlock(solids, head, {side - 1.5f, chin + 7.0f, 15.0f},
                 {side + 1.5f, chin + 10.0f, 16.0f}, lips);
    addHeadgear(solids, head, livery);
}

void addArms(Solids& solids, const mat4& body, const mat4& gun, Colour colour) {
    const mat4 toBody = glm::inverse(body) * gun;
    struct Arm {
        vec3 shoulder;
        vec3 hand;
    };
    const Arm arms[] = {{{-21.0f, shoulder, 0.0f}, {0.0f, -5.0f, 3.0f}},
                        {{21.0f, shoulder, 0.0f}, {1.5f, -2.5f, 21.0f}}};
    for (const Arm& arm : arms) {
        const vec3 hand(toBody * glm::vec4(arm.hand, 1.0f));
        const vec3 elbow =
            0.5f * (arm.shoulder + hand) + vec3(std::copysign(3.0f, arm.shoulder.x), -8.0f, 0.0f);
        addLimb(solids, body, arm.shoulder + vec3(0.0f, 3.0f, 0.0f), elbow, 9.0f, colour);
        addLimb(solids, body, elbow, hand, 8.0f, skinColour);
        addBlock(solids, gun, arm.hand - vec3(4.5f), arm.hand + vec3(4.5f), skinColour);
    }
}

} // namespace

void addFigure(Solids& solids, const FigurePose& pose) {
    if (pose.soaked)
        return;
    solids.sun = static_cast<std::uint8_t>(std::lround(255.0f * std::clamp(pose.sun, 0.0f, 1.0f)));
    const Livery& livery = liveryOf(pose.colour, pose.palette);
    const float pitch = anglesOf(pose.direction).pitch;
    const mat4 feet = placeOf(pose);
    const float sunk = addLegs(solids, feet, pose, darker(livery.colour, shadeShare));
    const mat4 body = glm::translate(feet, {0.0f, -sunk, 0.0f});
    addTorso(solids, body, livery.colour);
    addHead(solids, body, pose, pitch, livery);
    // The gun stays where the nozzle is, however the body bobs.
    const mat4 gun = gunPlace(feet, pitch);
    addGun(solids, gun, livery.colour);
    addArms(solids, body, gun, livery.colour);
}

vec3 nozzleOf(const FigurePose& pose) {
    const mat4 gun = gunPlace(placeOf(pose), anglesOf(pose.direction).pitch);
    return vec3(gun * glm::vec4(gunTip, 1.0f));
}

} // namespace drench::game
