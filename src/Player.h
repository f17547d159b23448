#pragma once

#include "Box.h"
#include "MapManager.h"
#include "Messages.h"
#include "NetworkInfo.h"
#include "Quaternion.h"
#include "Vector.h"

#include <type_traits>

/// A player's inputs between two ticks, as the records of its client give them.
struct Controls {
    /// Indexed by keyIndex, jump apart.
    bool held[keyIndex::count] = {};

    /// Asks for one jump, taken as soon as the player stands on something.
    bool jump = false;

    /// Mouse counts: Player::rotateView.
    int dx = 0;
    int dy = 0;
};

/// One player, plain data: identity, keys, body, view, movement, death and address. Distances are
/// world units, speeds world units per tick, times milliseconds of getCurrentMillisecond() as a
/// float, angles radians. y is up.
struct Player {
    /// Four on balconies at the middles of the sides, then four on the ground near the corners.
    static constexpr int spawnPoseCount = 8;

    /// Edge lengths of the body along x, y and z in world units. It passes gaps that are one cube
    /// wide and three high; a larger body would not fit through the passages of arenas.
    static constexpr vec3 bodySize{50.0f, 150.0f, 50.0f};

    /// World units per tick, forward and backward. There is no time step: the tick rate makes this
    /// some 370 a second. Clients predict with it; another speed makes their players jerk.
    static constexpr float walkingSpeed = 6.0f;

    /// World units per tick to either side, the same as forward, so that dodging is no slower. Both
    /// together move a body by their diagonal, which carries the widest leaps of arenas.
    static constexpr float strafingSpeed = 6.0f;

    /// World units per tick, upward. Gravity already acts in the tick of the take-off, so the first
    /// step is 11.5 and the whole rise 138: two cubes can be climbed. With less, arenas have dead
    /// ends.
    static constexpr float takeOffSpeed = 12.0f;

    /// Soaked players wait here for their respawn, far outside the world and out of sight. A state
    /// has no other sign of a soaked player: its readers compare with this very position.
    static constexpr vec3 soakedPlace{-1375.2f, 797.701f, -1280.61f};

    /// World units per tick², subtracted in double and stored as float. There is no fastest fall.
    /// It is a power of two, so vertical speeds are exact multiples of it. With another value,
    /// bodies that fall alike would differ in their last bits, and searches over their states would
    /// never end.
    static constexpr double gravity = 0.5;

    /// World units per tick. Gravity acts while the vertical speed is at most this. It lies above
    /// `takeOffSpeed`: a jump that exceeded it would rise for ever.
    static constexpr float gravityCutOff = 13.0f;

    /// Mouse counts in a turn by one radian. Clients scale their mice to it: another number is
    /// another sensitivity for every player.
    static constexpr double countsPerRadian = 360.0;

    /// A view is refused if its x and z both lie within this of zero: from 81.9 degrees up or down,
    /// or 84.3 along an axis. Nearer to the vertical the strafe vector has no direction.
    static constexpr double steepView = 0.1;

    /// Milliseconds from a soaking to the respawn: long enough to lose the place that was fought
    /// for, short enough to stay in the match. Clients count down from it.
    static constexpr float respawnDelay = 4000.0f;

    /// Milliseconds of silence after which a player is dropped. Idle clients send a sign of life
    /// every second, so several in a row must get lost. A shorter limit would drop players on bad
    /// lines.
    static constexpr float connectionTimeOut = 5000.0f;

    /// '1' to '4' for players who joined.
    char playerID;
    float lastMessageTime;

    /// True while held; indexed by keyIndex.
    bool keys[keyIndex::count];

    /// The body, centred on `position`.
    Box box;

    /// The state that clients are sent. `name` and `points` live only here; the rest is stale
    /// between calls of getPlayerUpdate().
    PlayerUpdate playerUpdate;

    /// Not owned; set before the first update().
    MapManager* mapMan;
    vec3 position;

    /// Kept at position + direction.
    vec3 look;
    vec3 up;
    vec3 direction;

    /// Unit vector up × direction, to the player's left.
    vec3 strafeVector;
    quat rotation;
    float moveSpeed;
    float strafeSpeed;

    /// Positive is upward.
    float verticalSpeed;

    /// This tick's inputs, each -1, 0 or 1.
    float moveInput;
    float strafeInput;

    /// This tick's displacement.
    vec3 velocity;
    bool inAir;
    bool dead;
    float deathTime;
    Client client;

    /// Spawns a player, last heard from now. Keeps at most 11 characters of `name`; null is "".
    Player(char id, const char* name);

    /// Spawns a player at a chosen pose, 0 to spawnPoseCount - 1, last heard from at `now`. Reads
    /// neither the clock nor rand().
    Player(char id, const char* name, float now, int pose);

    /// Identifier '0', name "NO_NAME".
    Player();

    char getPlayerID() const { return playerID; }
    void setMapMan(MapManager* m) { mapMan = m; }
    char* getName() { return playerUpdate.name; }
    bool isShooting() const { return keys[keyIndex::shoot]; }
    Box getBox() const { return box; }
    quat getRotation() const { return rotation; }
    vec3 getDirection() const { return direction; }
    vec3 getStrafe() const { return strafeVector; }
    vec3 getUp() const { return up; }
    vec3 getPosition() const { return position; }
    void setRotation(quat q) { rotation = q; }

    /// Holds or releases a key; an index outside 0..5 is ignored.
    void setKey(int key, bool down);

    /// Recomputes `direction` from the look-at point and `strafeVector` from that.
    void updateDirAndStrafe();

    /// Rotates the view by one mouse report: pitch about the strafe vector, then yaw about up.
    /// @param dx,dy  mouse counts; see countsPerRadian. Positive dx turns right, positive dy down.
    /// The strafe vector is refreshed before the turn only, so it lags one report behind a yaw.
    void rotateView(int dx, int dy);

    /// Turns direction, look-at point and `rotation` by `angle` radians about `axis`; `rotation`
    /// takes the turn on its right if postMultiply, else on its left. A turn that would end in a
    /// steepView is dropped whole.
    void rotateViewAround(float angle, vec3 axis, bool postMultiply);

    /// The state that clients are sent, name and points included.
    PlayerUpdate getPlayerUpdate();

    /// Writes position, look-at point, up and rotation to standard output.
    void toConsole() const;

    /// One tick. The dead only wait for their respawn; the living take their keys, jump or fall,
    /// and move along y, x and z in turn, each step undone whole when the body would touch a cube.
    /// @param now  milliseconds at the start of the tick
    void update(float now);

    /// Takes off, whatever the player stands on.
    void jump();

    /// Moves position, look-at point and body by v · scale.
    void moveAll(vec3 v, float scale);

    /// Moves along the horizontal part of the view, or of the strafe vector, by `amount` ticks'
    /// worth, through anything.
    void move(float amount);
    void strafe(float amount);

    /// The point that a shot from the body's centre along the view hits; x is negative if none.
    vec3 shoot(const MapManager* map) const;

    /// Puts the body at rest: centred at `centre`, seeing `lookAt`. Its `rotation`, keys and inputs
    /// stay as they are.
    void placeAt(vec3 centre, vec3 lookAt);

    /// Takes controls as a room takes the records of a living player: keys first, then the view. A
    /// jump is only ever asked for, never taken back. The dead take none.
    void apply(const Controls& controls);

    /// Soaks the player: parks it outside the world and releases its keys. Dying again restarts the
    /// wait.
    void die(float now);

    /// Puts the player at one of the spawn poses, chosen by rand(), with all keys released.
    void spawn();

    /// The same at a chosen pose, 0 to spawnPoseCount - 1.
    void spawnAt(int pose);

    bool alive() const { return !dead; }

    /// One point up or down; the score may go negative and wraps at the ends of an int.
    void incPoints();
    void decPoints();

    /// Whether more than connectionTimeOut has passed since the last message.
    bool lostConnection(float now) const;

    /// Notes that the player was heard from just now.
    void connectedMessageReceived();
};

static_assert(std::is_trivially_copyable_v<Player>);

/// A body in `map` that nobody plays: at rest at `centre`, seeing `lookAt`. Reads neither the clock
/// nor rand(), so predictions and searches can make any number of them.
Player bodyAt(MapManager& map, vec3 centre, vec3 lookAt);
