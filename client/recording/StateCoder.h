#pragma once

#include "client/recording/Columns.h"
#include "src/Messages.h"
#include "src/Vector.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// States of a room in few bytes. The decoder moves each player as the room does, by a turn and a
// step that the encoder found; what is stored beside these is the difference, mostly nothing. Any
// state comes back bit by bit, whatever it holds.
//
// A file must read alike everywhere and for ever: this uses only sums, products, quotients and
// roots, which IEEE 754 makes the same on every machine, and no constant of the game. A game with
// other speeds would only make longer files.

namespace drench::client {

/// Whether a datagram has the length and the first four bytes of a state, which are not stored.
bool isCodableState(std::string_view datagram);

/// A player's floats in a state, in the order of the wire: rotation, position, direction.
constexpr std::size_t playerFloats = 10;

/// The bytes of a player behind them.
constexpr std::size_t playerRest = sizeof(PlayerUpdate) - playerFloats * sizeof(float);

/// Columns of one slot.
template<class Column>
struct SlotColumns {
    /// One byte a state: how the player moved, and whether it turned.
    Column steps;

    /// Mouse counts of each turn.
    Column counts;

    /// Whether the rest changed, and its bytes if so, exclusive-or those before.
    Column rests;

    /// Signed differences of each float, in units of the last place.
    std::array<Column, playerFloats> differences;

    /// Calls visit(column) for each column, in the order of the file.
    template<class Visit>
    void forEach(const Visit& visit) {
        visit(steps);
        visit(counts);
        visit(rests);
        for (Column& column : differences)
            visit(column);
    }
};

template<class Column>
using StateColumns = std::array<SlotColumns<Column>, maxPlayers>;

/// The state of the coder between states, equal on both sides.
class StateCoder {
  public:
    /// `state` must be a codable one.
    void encode(std::string_view state, StateColumns<std::string>& columns);

    /// Throws InputError when a column ends too early.
    std::string decode(StateColumns<ColumnReader>& columns);

  private:
    using Floats = std::array<float, playerFloats>;

    struct Step {
        bool hasTurned = false;
        std::int32_t dx = 0;
        std::int32_t dy = 0;
        std::uint8_t moves = 0;
    };

    struct Slot {
        Floats floats = {};
        std::array<char, playerRest> rest = {};

        /// As Player has them.
        vec3 look;
        vec3 strafe;
        float verticalSpeed = 0.0f;
    };

    static Step guessTurn(const Slot& slot, const Floats& seen);
    static std::uint8_t guessMoves(const Slot& slot, const Floats& seen);
    static void turn(Slot& slot, const Step& step);
    static void move(Slot& slot, std::uint8_t moves);
    static bool isTame(const Slot& slot);
    static void takeOverPosition(Slot& slot, const Floats& before, const Floats& predicted);

    std::array<Slot, maxPlayers> slots_;
};

} // namespace drench::client
