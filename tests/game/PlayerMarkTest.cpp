#include "game/PlayerMark.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

double distance(const arena::Colour& a, const arena::Colour& b) {
    return std::hypot(a.red - b.red, a.green - b.green, a.blue - b.blue);
}

} // namespace

TEST(PlayerMark, PlayersDifferInShapeAndInColour) {
    for (const Palette palette : {Palette::usual, Palette::colourBlind}) {
        for (char a = '1'; a <= '4'; ++a) {
            const PlayerMark mark = markOf(a, palette);
            for (char b = '1'; b < a; ++b) {
                EXPECT_NE(mark.shape, markOf(b, palette).shape);
                EXPECT_GT(distance(mark.colour, markOf(b, palette).colour), 70.0);
            }
        }
    }
}

TEST(PlayerMark, ShapesStayWhenColoursChange) {
    for (char id = '1'; id <= '4'; ++id)
        EXPECT_EQ(markOf(id, Palette::usual).shape, markOf(id, Palette::colourBlind).shape);
}

TEST(PlayerMark, NobodysIsWhite) {
    const arena::Colour white{255, 255, 255};
    for (const char id : {'\0', 's', '0', '5', '\xFF'})
        EXPECT_EQ(markOf(id, Palette::usual).colour, white);
}
