#include "arena/NearestMaterial.h"

#include <gtest/gtest.h>
#include <string>

using namespace drench;

TEST(NearestMaterial, IsFoundForColoursFromTheWholeCube) {
    std::string found;
    for (int red = 0; red <= 255; red += 51) {
        for (int green = 0; green <= 255; green += 51) {
            for (int blue = 0; blue <= 255; blue += 51) {
                const int nearest = arena::nearestMaterial({static_cast<std::uint8_t>(red),
                                                            static_cast<std::uint8_t>(green),
                                                            static_cast<std::uint8_t>(blue)});
                found += arena::materialOf(nearest)->character;
            }
        }
    }
    // As another program of the published formulas says; one line for each red.
    EXPECT_EQ(found, "tttaaatttaaalltaaalll~~~gggg~~gggymm"
                     "tttaaatttaaalltaaalll~~~gggg~~ggyymm"
                     "ttttaattttaallttaagggs~~ggggs~yyyymm"
                     "bbbtaabbbtaawbbtaaggwss~gggys~yyyymm"
                     "bbbbbabbbbbacbbbs~cccsssyyyypmyyymmm"
                     "bbbbbbcbbbbbcccccscccpppyyyppmyyymmm");
}

TEST(NearestMaterial, OfAMaterialsColourIsThatMaterial) {
    for (const arena::Material& material : arena::materials().subspan(1))
        EXPECT_EQ(arena::nearestMaterial(material.colour), material.cellValue) << material.name;
}
