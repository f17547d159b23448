#include "Player.h"

#include "MathOps.h"
#include "Timing.h"

#include <cstdlib>
#include <iostream>

namespace {

struct Pose {
    vec3 position;
    vec3 look;
    quat rotation;
};

constexpr Pose spawnPoses[Player::spawnPoseCount] = {
    {{1010.68f, 538.201f, 133.03f},
     {1010.67f, 538.15f, 134.028f},
     {0.0236078f, -0.0194449f, -0.000244947f, 0.999531f}},
    {{113.387f, 538.201f, 1036.47f},
     {114.386f, 538.169f, 1036.5f},
     {0.00980021f, 0.68764f, -0.00984103f, 0.725916f}},
    {{1033.1f, 538.201f, 1919.44f},
     {1033.13f, 538.091f, 1918.44f},
     {-3.91328e-05f, 0.998179f, -0.0527532f, 0.0290938f}},
    {{1922.29f, 538.201f, 997.49f},
     {1921.29f, 538.13f, 997.454f},
     {-0.0235345f, 0.729366f, -0.0235971f, -0.683302f}},
    {{191.587f, 154.201f, 281.457f},
     {192.335f, 154.277f, 282.116f},
     {0.0364354f, -0.398095f, -0.0171409f, -0.916444f}},
    {{1771.3f, 154.201f, 251.968f},
     {1770.62f, 154.384f, 252.683f},
     {0.0881591f, 0.381228f, 0.0334798f, -0.919641f}},
    {{1789.25f, 154.201f, 1788.33f},
     {1788.55f, 154.4f, 1787.64f},
     {0.0407307f, 0.924549f, 0.0941632f, -0.366942f}},
    {{251.774f, 154.201f, 1809.15f},
     {252.445f, 154.425f, 1808.44f},
     {-0.040981f, 0.91708f, 0.107472f, 0.381698f}},
};

/// World units that a player spawns above its pose, so that it drops in from the air; a pose lies
/// as high as a standing body's centre.
constexpr float spawnLift = 120.0f;

/// The view of a soaked player from there.
constexpr Pose deathPose = {Player::soakedPlace,
                            {-1374.52f, 797.664f, -1279.88f},
                            {-0.0758345f, 0.904769f, -0.164282f, -0.385529f}};

int randomPose() {
    return rand() % Player::spawnPoseCount;
}

void copyName(char (&field)[12], const char* name) {
    constexpr int longest = sizeof field - 1;
    int i = 0;
    for (; name && name[i] != 0 && i < longest; ++i)
        field[i] = name[i];
    field[i] = 0;
}

/// Puts the body somewhere, neither rising nor falling; `velocity` keeps the last tick's value.
void putAt(Player& player, vec3 centre, vec3 lookAt) {
    player.position = centre;
    player.look = lookAt;
    player.updateDirAndStrafe();
    player.verticalSpeed = 0.0f;
    player.inAir = false;
    player.box = Box(centre, Player::bodySize);
}

/// The common part of spawning and dying.
void standAt(Player& player, const Pose& pose, float lift) {
    const vec3 raised(0.0f, lift, 0.0f);
    putAt(player, pose.position + raised, pose.look + raised);
    player.rotation = pose.rotation;
    player.moveSpeed = Player::walkingSpeed;
    player.strafeSpeed = Player::strafingSpeed;
    player.moveInput = 0.0f;
    player.strafeInput = 0.0f;
    for (bool& key : player.keys)
        key = false;
}

/// The horizontal part of `along` · speed, for a step that leaves the height alone.
vec3 horizontal(vec3 along, float speed) {
    const vec3 step = along * speed;
    return {step.x, 0.0f, step.z};
}

/// Moves the player, or leaves it where it was if its body would touch a cube there. The undo
/// subtracts the step again, so the position may change in its last bit.
bool tryStep(Player& player, vec3 step) {
    player.moveAll(step, 1.0f);
    if (!player.mapMan->collides(player.box))
        return true;
    player.moveAll(step, -1.0f);
    return false;
}

} // namespace

Player::Player(char id, const char* name, float now, int pose)
    : playerID(id), lastMessageTime(now), mapMan(nullptr), dead(false), deathTime(0.0f) {
    copyName(playerUpdate.name, name);
    spawnAt(pose);
}

Player::Player(char id, const char* name)
    : Player(id, name, static_cast<float>(getCurrentMillisecond()), randomPose()) {}

Player::Player() : Player('0', "NO_NAME") {}

void Player::setKey(int key, bool down) {
    if (key >= 0 && key < keyIndex::count)
        keys[key] = down;
}

void Player::updateDirAndStrafe() {
    direction = look - position;
    direction.normalize();
    strafeVector = up.cross(direction);
    strafeVector.normalize();
}

void Player::rotateView(int dx, int dy) {
    const float pitch = static_cast<float>(static_cast<double>(dy) / countsPerRadian);
    const float yaw =
        static_cast<float>(static_cast<double>(wrappingMultiply(dx, -1)) / countsPerRadian);
    updateDirAndStrafe();
    rotateViewAround(pitch, strafeVector, false);
    rotateViewAround(yaw, up, false);
}

void Player::rotateViewAround(float angle, vec3 axis, bool postMultiply) {
    quat q;
    q.fromAxisAngle(axis, angle);
    const vec3 d = q * direction;
    const double x = static_cast<double>(d.x);
    const double z = static_cast<double>(d.z);
    if (steepView > x && x > -steepView && steepView > z && z > -steepView)
        return;
    direction = d;
    look = position + direction;
    rotation = postMultiply ? rotation * q : q * rotation;
}

PlayerUpdate Player::getPlayerUpdate() {
    playerUpdate.rotation = rotation;
    playerUpdate.position = position;
    playerUpdate.direction = direction;
    playerUpdate.shooting = isShooting();
    playerUpdate.id = playerID;
    return playerUpdate;
}

void Player::toConsole() const {
    std::cout << "Player Infomation\n";
    std::cout << "vec3 pos = " << position << "\n";
    std::cout << "vec3 look = " << look << "\n";
    std::cout << "vec3 up = " << up << "\n";
    std::cout << "quat4 q = ";
    rotation.display();
    std::cout << std::endl;
}

void Player::update(float now) {
    if (dead) {
        if (now - deathTime >= respawnDelay) {
            dead = false;
            spawn();
        }
        return;
    }

    moveInput = 0.0f;
    strafeInput = 0.0f;
    if (keys[keyIndex::right])
        strafeInput -= 1.0f;
    if (keys[keyIndex::left])
        strafeInput += 1.0f;
    if (keys[keyIndex::backward])
        moveInput -= 1.0f;
    if (keys[keyIndex::forward])
        moveInput += 1.0f;

    if (keys[keyIndex::jump] && !inAir) {
        jump();
        keys[keyIndex::jump] = false;
    }
    if (verticalSpeed <= gravityCutOff)
        verticalSpeed = static_cast<float>(static_cast<double>(verticalSpeed) - gravity);

    // The view's horizontal part is not renormalised: looking up slows walking. Nor is the sum of
    // both inputs: walking aslant is faster.
    velocity = vec3(0.0f, verticalSpeed, 0.0f);
    if (moveInput != 0.0f)
        velocity += horizontal(direction, moveSpeed * moveInput);
    if (strafeInput != 0.0f)
        velocity += horizontal(strafeVector, strafeSpeed * strafeInput);

    // Floor and ceiling alike end the vertical motion and allow a jump.
    inAir = tryStep(*this, vec3(0.0f, velocity.y, 0.0f));
    if (!inAir)
        verticalSpeed = 0.0f;
    if (moveInput == 0.0f && strafeInput == 0.0f)
        return;
    tryStep(*this, vec3(velocity.x, 0.0f, 0.0f));
    tryStep(*this, vec3(0.0f, 0.0f, velocity.z));
}

void Player::jump() {
    inAir = true;
    verticalSpeed = takeOffSpeed;
}

void Player::moveAll(vec3 v, float scale) {
    const vec3 d = v * scale;
    position += d;
    look += d;
    box.move(d, 1.0f);
}

void Player::move(float amount) {
    moveAll(horizontal(direction, amount * moveSpeed), 1.0f);
}

void Player::strafe(float amount) {
    moveAll(horizontal(strafeVector, amount * strafeSpeed), 1.0f);
}

vec3 Player::shoot(const MapManager* map) const {
    return map->pointOfIntersection(position, direction);
}

void Player::placeAt(vec3 centre, vec3 lookAt) {
    putAt(*this, centre, lookAt);
    velocity = vec3();
}

void Player::apply(const Controls& controls) {
    if (dead)
        return;
    for (int key = 0; key < keyIndex::count; ++key) {
        if (key != keyIndex::jump)
            setKey(key, controls.held[key]);
    }
    if (controls.jump)
        setKey(keyIndex::jump, true);
    if (controls.dx != 0 || controls.dy != 0)
        rotateView(controls.dx, controls.dy);
}

void Player::die(float now) {
    dead = true;
    deathTime = now;
    standAt(*this, deathPose, 0.0f);
}

void Player::spawn() {
    spawnAt(randomPose());
}

void Player::spawnAt(int pose) {
    up = vec3(0.0f, 1.0f, 0.0f);
    standAt(*this, spawnPoses[pose], spawnLift);
}

void Player::incPoints() {
    playerUpdate.points = wrappingAdd(playerUpdate.points, 1);
}

void Player::decPoints() {
    playerUpdate.points = wrappingAdd(playerUpdate.points, -1);
}

bool Player::lostConnection(float now) const {
    return now - lastMessageTime > connectionTimeOut;
}

void Player::connectedMessageReceived() {
    lastMessageTime = static_cast<float>(getCurrentMillisecond());
}

Player bodyAt(MapManager& map, vec3 centre, vec3 lookAt) {
    Player body('0', nullptr, 0.0f, 0);
    body.setMapMan(&map);
    body.placeAt(centre, lookAt);
    return body;
}
