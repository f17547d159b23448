#include "game/MaterialTextures.h"

#include "arena/Materials.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

const Texel& at(const std::vector<Texel>& texels, int x, int y) {
    return texels.at(static_cast<std::size_t>(y * textureSide + x));
}

double mean(const std::vector<Texel>& texels, std::size_t channel) {
    double sum = 0.0;
    for (const Texel& texel : texels)
        sum += texel[channel];
    return sum / static_cast<double>(texels.size());
}

/// The mean step from each texel of a column to its neighbour in another column.
double stepBetween(const std::vector<Texel>& texels, int left, int right) {
    double sum = 0.0;
    for (int y = 0; y < textureSide; ++y)
        sum += std::abs(int{at(texels, left, y)[0]} - int{at(texels, right, y)[0]});
    return sum / textureSide;
}

double stepBetweenRows(const std::vector<Texel>& texels, int low, int high) {
    double sum = 0.0;
    for (int x = 0; x < textureSide; ++x)
        sum += std::abs(int{at(texels, x, low)[0]} - int{at(texels, x, high)[0]});
    return sum / textureSide;
}

} // namespace

TEST(MaterialTextures, EveryMaterialHasOneOfItsOwn) {
    ASSERT_EQ(textureCount(), static_cast<int>(arena::materials().size()));
    std::vector<std::vector<Texel>> all;
    for (const arena::Material& material : arena::materials()) {
        const std::vector<Texel> texels = texelsOf(textureOf(material.cellValue));
        EXPECT_EQ(texels.size(), std::size_t{textureSide} * textureSide);
        EXPECT_EQ(std::count(all.begin(), all.end(), texels), 0) << material.name;
        all.push_back(texels);
    }
}

TEST(MaterialTextures, WhatIsNoMaterialStaysAsItIs) {
    for (const int cellValue : {-1, 0, textureCount(), 255, 100000})
        EXPECT_EQ(textureOf(cellValue), 0) << cellValue;
    for (const Texel& texel : texelsOf(0))
        ASSERT_EQ(texel, (Texel{unchanged, unchanged, unchanged, 255}));
}

TEST(MaterialTextures, FromAfarMaterialsHaveTheirColours) {
    for (int texture = 0; texture < textureCount(); ++texture) {
        const std::vector<Texel> texels = texelsOf(texture);
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(mean(texels, channel), unchanged, 1.0)
                << arena::materialName(texture) << ", channel " << channel;
    }
}

TEST(MaterialTextures, NeighboursMeetWithoutASeam) {
    for (int texture = 1; texture < textureCount(); ++texture) {
        const std::vector<Texel> texels = texelsOf(texture);
        double mostAcross = 0.0;
        double mostUp = 0.0;
        for (int i = 0; i + 1 < textureSide; ++i) {
            mostAcross = std::max(mostAcross, stepBetween(texels, i, i + 1));
            mostUp = std::max(mostUp, stepBetweenRows(texels, i, i + 1));
        }
        EXPECT_LE(stepBetween(texels, textureSide - 1, 0), 1.1 * mostAcross)
            << arena::materialName(texture);
        EXPECT_LE(stepBetweenRows(texels, textureSide - 1, 0), 1.1 * mostUp)
            << arena::materialName(texture);
    }
}

TEST(MaterialTextures, NoTexelIsBlackAndMostAreNearTheColour) {
    for (int texture = 1; texture < textureCount(); ++texture) {
        int far = 0;
        for (const Texel& texel : texelsOf(texture)) {
            ASSERT_GT(texel[0], unchanged / 3) << arena::materialName(texture);
            ASSERT_EQ(texel[3], 255);
            far += std::abs(texel[1] - unchanged) > unchanged / 4;
        }
        EXPECT_LT(far, textureSide * textureSide / 4) << arena::materialName(texture);
    }
}
