#include "arena/Materials.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <tuple>

using namespace drench;

using arena::Colour;
using arena::colourOf;
using arena::Material;
using arena::materialName;
using arena::materialOf;
using arena::materials;

namespace {

std::tuple<int, int, int> components(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

} // namespace

TEST(Materials, BeginWithAirAndGoOnWithoutGaps) {
    ASSERT_GT(materials().size(), 1u);
    EXPECT_STREQ(materials()[0].name, "air");
    int expected = 0;
    for (const Material& material : materials())
        EXPECT_EQ(material.cellValue, expected++);
}

TEST(Materials, HaveCharactersNamesAndColoursOfTheirOwn) {
    std::set<char> characters;
    std::set<std::string> names;
    std::set<std::tuple<int, int, int>> colours;
    for (const Material& material : materials()) {
        EXPECT_TRUE(characters.insert(material.character).second) << material.name;
        EXPECT_TRUE(names.insert(material.name).second) << material.name;
        EXPECT_TRUE(colours.insert(components(material.colour)).second) << material.name;
    }
}

TEST(Materials, CanBeWrittenInAPlansLegend) {
    for (const Material& material : materials()) {
        EXPECT_GT(material.character, ' ') << material.name;
        EXPECT_LE(material.character, '~') << material.name;
        EXPECT_NE(material.character, '#') << material.name;
        EXPECT_GT(std::strlen(material.name), 0u);
        EXPECT_EQ(std::strpbrk(material.name, " \t\r\n"), nullptr) << material.name;
    }
}

/// Plans name materials by their characters, and voxel files by their colours.
TEST(Materials, StayAsTheyAreInFiles) {
    std::ostringstream table;
    for (const Material& material : materials()) {
        const auto [red, green, blue] = components(material.colour);
        table << material.character << ' ' << material.name << ' ' << red << ' ' << green << ' '
              << blue << '\n';
    }
    EXPECT_EQ(table.str(), ". air 0 0 0\n"
                           "g ground 126 174 82\n"
                           "s stone 166 164 158\n"
                           "w wood 182 128 74\n"
                           "b brick 188 86 68\n"
                           "l leaves 66 130 70\n"
                           "~ water 76 166 220\n"
                           "m marble 234 230 220\n"
                           "y sand 232 202 132\n"
                           "c clay 222 124 62\n"
                           "t slate 88 102 128\n"
                           "a tile 40 110 186\n"
                           "p plaster 244 200 180\n");
}

TEST(Materials, AreFoundByTheirCellValue) {
    for (const Material& material : materials()) {
        EXPECT_EQ(materialOf(material.cellValue), &material);
        EXPECT_EQ(materialName(material.cellValue), material.name);
        EXPECT_EQ(colourOf(material.cellValue), material.colour);
    }
    EXPECT_STREQ(materialOf(6)->name, "water");
}

TEST(Materials, OtherCellValuesHaveNone) {
    for (const int value : {-1, static_cast<int>(materials().size()), 255, INT_MIN, INT_MAX}) {
        EXPECT_EQ(materialOf(value), nullptr) << value;
        EXPECT_EQ(materialName(value), "material " + std::to_string(value));
    }
}

TEST(MaterialColours, DifferForAllCellValuesUpToALastByte) {
    std::set<std::tuple<int, int, int>> colours;
    for (int value = 0; value <= 255; ++value)
        EXPECT_TRUE(colours.insert(components(colourOf(value))).second) << value;
}

TEST(MaterialColours, OfOtherCellValuesAreNoMaterials) {
    const int end = static_cast<int>(materials().size());
    for (const int value : {INT_MIN, -70000, -1, end, 256, 1000, 70001, INT_MAX}) {
        for (const Material& material : materials())
            EXPECT_NE(colourOf(value), material.colour) << value << " and " << material.name;
    }
    for (int value = -3000; value < 3000; ++value) {
        if (!materialOf(value)) {
            EXPECT_EQ(colourOf(value).blue % 2, 1) << value;
        }
    }
    for (const Material& material : materials())
        EXPECT_EQ(material.colour.blue % 2, 0) << material.name;
}

TEST(MaterialColours, OfOtherCellValuesStayAsTheyAre) {
    EXPECT_EQ(components(colourOf(40)), std::tuple(242, 116, 37));
    EXPECT_EQ(components(colourOf(255)), std::tuple(195, 51, 3));
    EXPECT_EQ(components(colourOf(-1)), std::tuple(195, 51, 3));
}
