#include "lag/Impairment.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

using namespace drench;

using lag::Fate;
using lag::Impairment;
using lag::Settings;
using lag::Time;
using std::chrono::microseconds;
using std::chrono::milliseconds;

namespace {

constexpr int many = 200000;

/// The time at which datagram i comes in, one every 16 ms.
Time arrival(int i) {
    return Time(milliseconds(16) * i);
}

std::vector<Fate> fates(const Settings& settings, std::uint64_t seed, int count = many,
                        milliseconds apart = milliseconds(16)) {
    Impairment impairment(settings, seed);
    std::vector<Fate> all;
    for (int i = 0; i < count; ++i)
        all.push_back(impairment.decide(Time(apart * i)));
    return all;
}

double millisecondsFrom(Time start, Time end) {
    return std::chrono::duration<double, std::milli>(end - start).count();
}

/// Of datagrams lost one after the other.
struct Bursts {
    double lossShare;
    double meanLength;
    double meanGap;
};

Bursts burstsOf(const std::vector<Fate>& all) {
    int lost = 0;
    int bursts = 0;
    bool wasLost = false;
    for (const Fate& fate : all) {
        const bool isLost = fate.copies == 0;
        lost += isLost;
        bursts += isLost && !wasLost;
        wasLost = isLost;
    }
    const double count = static_cast<double>(all.size());
    return {lost / count, double(lost) / bursts, (count - lost) / bursts};
}

std::vector<int> copiesOf(const std::vector<Fate>& all) {
    std::vector<int> copies;
    for (const Fate& fate : all)
        copies.push_back(fate.copies);
    return copies;
}

Settings losing(double share, std::optional<double> meanBurst = std::nullopt) {
    Settings settings;
    settings.loss = share;
    settings.meanBurst = meanBurst;
    return settings;
}

} // namespace

TEST(Impairment, WithoutSettingsPassesEverythingOnAtOnce) {
    const std::vector<Fate> all = fates({}, 1, 1000);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(all[static_cast<std::size_t>(i)].copies, 1);
        EXPECT_EQ(all[static_cast<std::size_t>(i)].due, arrival(i));
    }
}

TEST(Impairment, DelayIsTheSameForAll) {
    Settings settings;
    settings.delay = microseconds(80500);
    const std::vector<Fate> all = fates(settings, 1, 1000);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(all[static_cast<std::size_t>(i)].due, arrival(i) + microseconds(80500));
}

TEST(Impairment, JitterIsAddedEvenlyWhereNobodyWaitsForOthers) {
    Settings settings;
    settings.delay = milliseconds(80);
    settings.jitter = milliseconds(16);
    const std::vector<Fate> all = fates(settings, 2);
    double sum = 0.0;
    int quarters[4] = {};
    for (int i = 0; i < many; ++i) {
        const double added =
            millisecondsFrom(arrival(i), all[static_cast<std::size_t>(i)].due) - 80.0;
        ASSERT_GE(added, 0.0);
        ASSERT_LT(added, 16.0);
        sum += added;
        ++quarters[static_cast<int>(added / 4.0)];
    }
    EXPECT_NEAR(sum / many, 8.0, 0.05);
    for (const int count : quarters)
        EXPECT_NEAR(count, many / 4, 1000);
}

TEST(Impairment, JitterKeepsTheOrderAndItsBounds) {
    Settings settings;
    settings.delay = milliseconds(10);
    settings.jitter = milliseconds(100);
    const std::vector<Fate> all = fates(settings, 3, many, milliseconds(1));
    double sum = 0.0;
    for (int i = 0; i < many; ++i) {
        const Fate& fate = all[static_cast<std::size_t>(i)];
        const double taken = millisecondsFrom(Time(milliseconds(i)), fate.due);
        ASSERT_GE(taken, 10.0);
        ASSERT_LT(taken, 110.0);
        if (i > 0) {
            ASSERT_GE(fate.due, all[static_cast<std::size_t>(i - 1)].due) << i;
        }
        sum += taken;
    }
    EXPECT_GT(sum / many, 60.0) << "who would overtake waits";
}

TEST(Impairment, LossOfItsOwnChanceComesInTheRunsOfChance) {
    const Bursts bursts = burstsOf(fates(losing(0.2), 4));
    EXPECT_NEAR(bursts.lossShare, 0.2, 0.004);
    EXPECT_NEAR(bursts.meanLength, 1.0 / 0.8, 0.02);
    EXPECT_NEAR(bursts.meanGap, 1.0 / 0.2, 0.1);
}

TEST(Impairment, BurstsHaveTheirMeanLengthAndLoseTheirShare) {
    const Bursts bursts = burstsOf(fates(losing(0.05, 4.0), 5));
    EXPECT_NEAR(bursts.lossShare, 0.05, 0.005);
    EXPECT_NEAR(bursts.meanLength, 4.0, 0.25);
    const Bursts longer = burstsOf(fates(losing(0.3, 20.0), 6));
    EXPECT_NEAR(longer.lossShare, 0.3, 0.025);
    EXPECT_NEAR(longer.meanLength, 20.0, 1.5);
}

TEST(Impairment, BurstsOfOneNeverLoseTwoInARow) {
    const Bursts bursts = burstsOf(fates(losing(0.1, 1.0), 7));
    EXPECT_NEAR(bursts.lossShare, 0.1, 0.003);
    EXPECT_EQ(bursts.meanLength, 1.0);
}

TEST(Impairment, MostLossLeavesOneDatagramBetweenTwoBursts) {
    EXPECT_DOUBLE_EQ(lag::mostLoss(1.0), 0.5);
    EXPECT_DOUBLE_EQ(lag::mostLoss(4.0), 0.8);
    const Bursts bursts = burstsOf(fates(losing(lag::mostLoss(4.0), 4.0), 8));
    EXPECT_NEAR(bursts.meanGap, 1.0, 0.001);
    EXPECT_NEAR(bursts.meanLength, 4.0, 0.1);
}

TEST(Impairment, LossOfAllAndOfNoneAreExact) {
    for (const Fate& fate : fates(losing(1.0), 9, 10000))
        EXPECT_EQ(fate.copies, 0);
    for (const Fate& fate : fates(losing(0.0, 4.0), 9, 10000))
        EXPECT_EQ(fate.copies, 1);
}

TEST(Impairment, FirstDatagramIsLostAsOftenAsOthers) {
    int lost = 0;
    for (std::uint64_t seed = 0; seed < 20000; ++seed)
        lost += Impairment(losing(0.3, 10.0), seed).decide(Time()).copies == 0;
    EXPECT_NEAR(lost, 6000, 250);
}

TEST(Impairment, DuplicatesItsShareOfThoseNotLost) {
    Settings settings = losing(0.5);
    settings.duplication = 0.1;
    int counts[3] = {};
    for (const Fate& fate : fates(settings, 10))
        ++counts[fate.copies];
    EXPECT_NEAR(counts[0], many / 2, 1000);
    EXPECT_NEAR(counts[2], (counts[1] + counts[2]) / 10, 400);
}

TEST(Impairment, HoldsItsShareBackAndLeavesTheOthersInTheirPlaces) {
    Settings plain;
    plain.delay = milliseconds(10);
    plain.jitter = milliseconds(40);
    Settings reordering = plain;
    reordering.reordering = 0.03;
    reordering.heldBack = milliseconds(70);
    const std::vector<Fate> inOrder = fates(plain, 11);
    const std::vector<Fate> reordered = fates(reordering, 11);
    int heldBack = 0;
    for (std::size_t i = 0; i < many; ++i) {
        const auto later = reordered[i].due - inOrder[i].due;
        ASSERT_TRUE(later == milliseconds(0) || later == milliseconds(70)) << i;
        heldBack += later != milliseconds(0);
    }
    EXPECT_NEAR(heldBack, 6000, 300);
}

TEST(Impairment, SameSeedDecidesAlike) {
    Settings settings = losing(0.1, 3.0);
    settings.delay = milliseconds(5);
    settings.jitter = milliseconds(50);
    settings.duplication = 0.1;
    settings.reordering = 0.1;
    const std::vector<Fate> first = fates(settings, 12, 10000);
    const std::vector<Fate> second = fates(settings, 12, 10000);
    for (std::size_t i = 0; i < first.size(); ++i) {
        ASSERT_EQ(first[i].copies, second[i].copies) << i;
        ASSERT_EQ(first[i].due, second[i].due) << i;
    }
    EXPECT_NE(copiesOf(first), copiesOf(fates(settings, 13, 10000)));
}

TEST(Impairment, OneSeedLosesTheSameDatagramsAtAnyDelay) {
    Settings slow = losing(0.1, 3.0);
    slow.delay = milliseconds(200);
    slow.jitter = milliseconds(100);
    slow.reordering = 0.2;
    EXPECT_EQ(copiesOf(fates(losing(0.1, 3.0), 14, 10000)), copiesOf(fates(slow, 14, 10000)));
}

TEST(Impairment, SeedsLoseIndependently) {
    const std::vector<Fate> first = fates(losing(0.5), 15);
    const std::vector<Fate> second = fates(losing(0.5), 16);
    int both = 0;
    for (std::size_t i = 0; i < many; ++i)
        both += first[i].copies == 0 && second[i].copies == 0;
    EXPECT_NEAR(both, many / 4, 1000);
}

TEST(Impairment, DecidesAlikeOnEveryMachine) {
    Settings settings = losing(0.25, 2.0);
    settings.duplication = 0.25;
    std::string drawn;
    for (const int copies : copiesOf(fates(settings, 7, 40)))
        drawn += static_cast<char>('0' + copies);
    // As another program of the same formulas says.
    EXPECT_EQ(drawn, "0211100121212111112120121000000111101122");
}
