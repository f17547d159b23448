#include "client/Explanation.h"
#include "src/FileLoader.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <utility>
#include <variant>

using namespace drench;
using namespace drench::client;

namespace {

constexpr Milliseconds period = 16.0;
constexpr Milliseconds delay = 50.0;

/// Limits of a search that allows anything which the records' times do not forbid.
constexpr SearchLimits anyTime = {0, 100.0, 100.0, 100.0, false};

SentRecord view(Milliseconds sentAt, int dx, int dy = 0) {
    SentRecord record;
    record.sentAt = sentAt;
    record.isView = true;
    record.dx = dx;
    record.dy = dy;
    return record;
}

SentRecord key(Milliseconds sentAt, int index, bool isDown = true) {
    SentRecord record;
    record.sentAt = sentAt;
    record.key = index;
    record.isDown = isDown;
    return record;
}

/// A player who stands in the arena, and the records that it sent.
class Explanation : public testing::Test {
  protected:
    Explanation() {
        map_.init(fileStringContents(DRENCH_MAPDATA));
        start_.player = Player('1', "Ann", 0.0f, 5);
        start_.player.setMapMan(&map_);
        for (int tick = 0; tick < 100; ++tick)
            start_.player.update(0.0f);
        truth_ = start_.player;
        times_.due = times_.arrival = 1000.0;
        times_.period = period;
        times_.delay = delay;
        times_.spread = 2.0;
    }

    /// The moment at which a record is sent that is expected to act `ticks` before the newest tick,
    /// in the middle of the time for it.
    static Milliseconds sentFor(int ticks) { return 1000.0 - delay - period / 2 - ticks * period; }

    /// Lets records act on the room's player, then moves it.
    void tick(const std::vector<std::uint64_t>& acting = {}) {
        for (const std::uint64_t number : acting)
            records_[number].actOn(truth_);
        truth_.update(0.0f);
    }

    std::vector<Hypothesis> explained(const SearchLimits& limits) {
        budget_ = 10'000;
        return explain(start_, records_, truth_.getPlayerUpdate(), times_, limits, budget_);
    }

    MapManager map_;
    Hypothesis start_;
    Player truth_ = Player('1', nullptr, 0.0f, 0);
    SentRecords records_;
    TickTimes times_;
    int budget_ = 0;
};

} // namespace

TEST_F(Explanation, TellsHowManyRecordsActed) {
    records_.add(view(sentFor(0), 5));
    records_.add(key(sentFor(0), keyIndex::forward));
    records_.add(view(sentFor(0), -9, 2));
    for (std::uint64_t count = 0; count <= 3; ++count) {
        truth_ = start_.player;
        std::vector<std::uint64_t> acting;
        for (std::uint64_t number = 0; number < count; ++number)
            acting.push_back(number);
        tick(acting);
        std::vector<Hypothesis> found = explained(anyTime);
        // The key may also have been lost if no view behind it acted.
        std::erase_if(found, [](const Hypothesis& way) { return !way.lost.empty(); });
        ASSERT_EQ(found.size(), 1u) << count;
        EXPECT_EQ(found[0].next, count);
        EXPECT_EQ(found[0].tick, 1);
        EXPECT_EQ(found[0].ticks, 1);
        EXPECT_TRUE(isSeen(found[0].player, truth_.getPlayerUpdate()));
    }
}

TEST_F(Explanation, TellsTurnsAllAroundAndFarUpAndDown) {
    for (const int right : {-5000, -2262, -1132, -1131, 1131, 2262, 5000}) {
        for (const int down : {-900, -480, -200, 0, 200, 480, 900}) {
            records_ = {};
            records_.add(view(sentFor(0), right, down));
            records_.add(view(sentFor(0), 3, -2));
            records_.add(view(sentFor(0), 1, 1));
            truth_ = start_.player;
            tick({0, 1});
            const std::vector<Hypothesis> found = explained(anyTime);
            ASSERT_EQ(found.size(), 1u) << right << " " << down;
            EXPECT_EQ(found[0].next, 2u) << right << " " << down;
        }
    }
}

TEST_F(Explanation, TellsTurnsOfWhichSomeAreRefused) {
    records_.add(view(sentFor(0), 0, -430));
    records_.add(view(sentFor(0), 20, -60));
    records_.add(view(sentFor(0), 7, 40));
    records_.add(view(sentFor(0), 9, 1));
    tick({0, 1, 2});
    EXPECT_GT(truth_.direction.y, std::sin(445.0f / 360.0f)) << "the second turn was refused";
    const std::vector<Hypothesis> found = explained(anyTime);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].next, 3u);
}

TEST_F(Explanation, SplitsRecordsOverMissedTicks) {
    records_.add(key(sentFor(1), keyIndex::forward));
    records_.add(view(sentFor(1), 40));
    records_.add(view(sentFor(1), 40));
    times_.count = 3;
    for (int first = 0; first < 3; ++first) {
        for (int second = first; second < 3; ++second) {
            truth_ = start_.player;
            for (int now = 0; now < 3; ++now) {
                std::vector<std::uint64_t> acting;
                if (now == 0)
                    acting.push_back(0);
                if (now == first)
                    acting.push_back(1);
                if (now == second)
                    acting.push_back(2);
                tick(acting);
            }
            const std::vector<Hypothesis> found = explained(anyTime);
            ASSERT_FALSE(found.empty()) << first << " " << second;
            EXPECT_EQ(found[0].next, 3u);
            EXPECT_EQ(found[0].ticks, 3);
            EXPECT_EQ(found[0].tick, 3);
        }
    }
}

TEST_F(Explanation, FindsNothingWhereNoRecordsLead) {
    records_.add(view(sentFor(0), 5));
    truth_.rotateView(6, 0);
    tick();
    EXPECT_TRUE(explained({4, 100.0, 100.0, 100.0, false}).empty());
}

TEST_F(Explanation, TakesViewsForLostAsAllowed) {
    for (int number = 0; number < 4; ++number)
        records_.add(view(sentFor(0), 5 + number));
    tick({0, 3});
    EXPECT_TRUE(explained({0, 100.0, 100.0, 100.0, false}).empty());
    EXPECT_TRUE(explained({1, 100.0, 100.0, 100.0, false}).empty());
    const std::vector<Hypothesis> found = explained({2, 100.0, 100.0, 100.0, false});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].lost, (std::vector<std::uint64_t>{1, 2}));
    EXPECT_EQ(found[0].next, 4u);
    EXPECT_GT(found[0].cost, 2 * 4.0);
}

TEST_F(Explanation, TakesOneKeyATickForLost) {
    records_.add(key(sentFor(0), keyIndex::forward));
    records_.add(view(sentFor(0), 5));
    tick({1});
    const std::vector<Hypothesis> found = explained(anyTime);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].lost, std::vector<std::uint64_t>{0});

    records_ = {};
    records_.add(key(sentFor(0), keyIndex::forward));
    records_.add(key(sentFor(0), keyIndex::left));
    records_.add(view(sentFor(0), 5));
    truth_ = start_.player;
    tick({2});
    EXPECT_TRUE(explained(anyTime).empty());
}

TEST_F(Explanation, LosesOverdueRecordsWithoutAllowance) {
    records_.add(view(sentFor(3), 5));
    records_.add(key(sentFor(3), keyIndex::forward));
    records_.add(view(sentFor(0), 7));
    tick({2});
    // Three ticks late, less the half tick of slack.
    EXPECT_TRUE(explained({0, 10.0, 10.0, 45.0, false}).empty());
    const std::vector<Hypothesis> found = explained({0, 10.0, 10.0, 30.0, false});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].lost, (std::vector<std::uint64_t>{0, 1}));
}

TEST_F(Explanation, PrefersTheLateViewToTheNextOneOfEqualCounts) {
    records_.add(view(sentFor(0) - 12.0, 5));
    records_.add(view(sentFor(0), 5));
    tick({0});
    // Four milliseconds late: too late for this search, but not lost.
    EXPECT_TRUE(explained({0, 2.0, 2.0, 20.0, false}).empty());
    const std::vector<Hypothesis> found = explained({0, 6.0, 6.0, 20.0, false});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].next, 1u);
    EXPECT_TRUE(found[0].lost.empty());
}

TEST_F(Explanation, LetsNoRecordActTooEarly) {
    records_.add(view(1000.0 - delay + 20.0, 5));
    tick({0});
    EXPECT_TRUE(explained({4, 19.0, 19.0, 19.0, false}).empty());
    EXPECT_EQ(explained({0, 21.0, 21.0, 21.0, false}).size(), 1u);
}

TEST_F(Explanation, LetsARecordActThoughOneBehindItIsLost) {
    records_.add(view(sentFor(0), 5));
    records_.add(view(sentFor(0), 6));
    records_.add(key(sentFor(0), keyIndex::forward));
    tick({0, 2});
    const std::vector<Hypothesis> found = explained({1, 100.0, 100.0, 100.0, false});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].lost, std::vector<std::uint64_t>{1});
    EXPECT_EQ(found[0].next, 3u);
}

TEST_F(Explanation, CostsLessTheBetterItFits) {
    records_.add(view(1000.0 - delay + 4.0, 5));
    tick({0});
    const std::vector<Hypothesis> early = explained(anyTime);
    ASSERT_EQ(early.size(), 1u);
    EXPECT_DOUBLE_EQ(early[0].cost, 2.0);
    times_.cost = 3.0;
    EXPECT_DOUBLE_EQ(explained(anyTime)[0].cost, 5.0);
}

TEST_F(Explanation, CostsNoMoreForARecordThatWasHeldUpThanForALoss) {
    records_.add(view(sentFor(5), 5));
    tick({0});
    const std::vector<Hypothesis> late = explained(anyTime);
    ASSERT_EQ(late.size(), 1u);
    records_.add(view(sentFor(0), 7));
    truth_ = start_.player;
    tick({1});
    const std::vector<Hypothesis> lost = explained({1, 100.0, 100.0, 100.0, false});
    ASSERT_EQ(lost.size(), 1u);
    EXPECT_DOUBLE_EQ(late[0].cost, lost[0].cost);
}

TEST_F(Explanation, KeepsWhatCannotYetBeTold) {
    // In the air a jump that waits does not show.
    truth_.jump();
    truth_.update(0.0f);
    start_.player = truth_;
    records_.add(key(sentFor(0), keyIndex::jump));
    tick({0});
    const std::vector<Hypothesis> found = explained(anyTime);
    ASSERT_EQ(found.size(), 3u) << "acted, lost, or still on its way";
}

TEST_F(Explanation, SkipsKeysThatChangeNothing) {
    records_.add(key(sentFor(0), keyIndex::forward, false));
    records_.add(key(sentFor(0), keyIndex::left, false));
    records_.add(view(sentFor(0), 5));
    tick({0, 1, 2});
    const std::vector<Hypothesis> found = explained(anyTime);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].next, 3u);
    EXPECT_TRUE(found[0].lost.empty());
}

TEST_F(Explanation, SeesTheFireKey) {
    records_.add(key(sentFor(0), keyIndex::shoot));
    tick({0});
    const std::vector<Hypothesis> found = explained(anyTime);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0].player.isShooting());
}

TEST_F(Explanation, MayStandStillInTheLastTick) {
    start_.player.keys[keyIndex::forward] = true;
    truth_ = start_.player;
    times_.count = 2;
    tick();
    EXPECT_TRUE(explained(anyTime).empty());
    times_.lastTickMoves = false;
    EXPECT_EQ(explained(anyTime).size(), 1u);
}

TEST_F(Explanation, TakesOverWhatIsClose) {
    SearchLimits close = anyTime;
    close.isTolerant = true;
    tick();
    truth_.moveAll({0.008f, 0.0f, -0.008f}, 1.0f);
    truth_.rotation.w += 0.001f;
    EXPECT_TRUE(explained(anyTime).empty());
    const std::vector<Hypothesis> found = explained(close);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(isSeen(found[0].player, truth_.getPlayerUpdate()));
    EXPECT_EQ(found[0].player.box.min.x, Box(truth_.position, Player::bodySize).min.x);

    Player far = truth_;
    truth_.moveAll({0.004f, 0.0f, 0.0f}, 1.0f);
    EXPECT_TRUE(explained(close).empty());
    truth_ = far;
    truth_.rotation.x += 0.002f;
    EXPECT_TRUE(explained(close).empty());
}

TEST_F(Explanation, EndsWithTheBudget) {
    for (int number = 0; number < 12; ++number)
        records_.add(view(sentFor(1), number % 2 == 0 ? 3 : -3));
    times_.count = 3;
    for (int now = 0; now < 3; ++now)
        tick();
    const PlayerUpdate seen = truth_.getPlayerUpdate();
    const SearchLimits bold = {8, 100.0, 100.0, 100.0, false};
    int large = 1'000'000;
    EXPECT_FALSE(explain(start_, records_, seen, times_, bold, large).empty());
    EXPECT_GT(large, 0);
    EXPECT_LT(large, 1'000'000 - 1000);
    for (const int budget : {0, 1, 10, 100}) {
        int left = budget;
        explain(start_, records_, seen, times_, bold, left);
        EXPECT_LE(left, 0) << budget;
    }
    int none = 0;
    EXPECT_TRUE(explain(start_, records_, seen, times_, bold, none).empty());
}

TEST(TickTimes, SayByHowMuchARecordIsEarlyOrLate) {
    TickTimes times;
    times.count = 2;
    times.due = 1000.0;
    times.arrival = 1005.0;
    times.period = 16.0;
    times.delay = 100.0;
    const auto misfit = [&](Milliseconds acts, int tick) {
        return times.misfit(view(acts - 100.0, 1), tick);
    };
    EXPECT_DOUBLE_EQ(misfit(970.0, 1), 0.0);
    EXPECT_DOUBLE_EQ(misfit(984.0, 1), 0.0);
    EXPECT_DOUBLE_EQ(misfit(987.0, 1), -3.0);
    EXPECT_DOUBLE_EQ(misfit(960.0, 1), 8.0);
    EXPECT_DOUBLE_EQ(misfit(960.0, 2), 24.0);
    EXPECT_DOUBLE_EQ(misfit(1000.0, 2), 0.0);
    // The last tick may have been as late as its snapshot.
    EXPECT_DOUBLE_EQ(misfit(1004.0, 2), 0.0);
    EXPECT_DOUBLE_EQ(misfit(1007.0, 2), -2.0);
    times.arrival = 900.0;
    EXPECT_DOUBLE_EQ(misfit(1000.0, 2), 0.0);
}

TEST(SentRecords, KeepTheirNumbers) {
    SentRecords records;
    EXPECT_EQ(records.begin(), 0u);
    EXPECT_EQ(records.end(), 0u);
    for (int i = 0; i < 10; ++i)
        records.add(view(0.0, i));
    records.forgetBefore(4);
    EXPECT_EQ(records.begin(), 4u);
    EXPECT_EQ(records.end(), 10u);
    EXPECT_EQ(records[4].dx, 4);
    EXPECT_EQ(records[9].dx, 9);
    records.forgetBefore(2);
    EXPECT_EQ(records.begin(), 4u);
    records.forgetBefore(100);
    EXPECT_EQ(records.begin(), records.end());
    EXPECT_EQ(records.end(), 10u);
    records.add(view(0.0, 10));
    EXPECT_EQ(records[10].dx, 10);
}

TEST(SentRecord, IsAnInputAndBack) {
    ViewMessage turn;
    turn.dx = -7;
    turn.dy = 3;
    const std::optional<SentRecord> turned = SentRecord::of(turn, 5.0);
    ASSERT_TRUE(turned);
    EXPECT_TRUE(turned->isView);
    EXPECT_EQ(turned->sentAt, 5.0);
    EXPECT_EQ(std::get<ViewMessage>(turned->input()).dx, -7);
    EXPECT_EQ(std::get<ViewMessage>(turned->input()).dy, 3);
    for (const bool isDown : {false, true}) {
        KeyMessage press;
        press.key = keyIndex::left;
        press.down = static_cast<char>(isDown);
        const std::optional<SentRecord> pressed = SentRecord::of(press, 6.0);
        ASSERT_TRUE(pressed);
        EXPECT_FALSE(pressed->isView);
        EXPECT_EQ(pressed->isDown, isDown);
        EXPECT_EQ(std::get<KeyMessage>(pressed->input()).key, keyIndex::left);
        EXPECT_EQ(std::get<KeyMessage>(pressed->input()).down != 0, isDown);
    }
    EXPECT_FALSE(SentRecord::of(TalkMessage(), 0.0));
    for (const int none : {-1, int{keyIndex::count}}) {
        KeyMessage odd;
        odd.key = static_cast<signed char>(none);
        EXPECT_FALSE(SentRecord::of(odd, 0.0)) << none;
    }
}

TEST(SentRecord, ChangesNothingIfItsKeyIsSo) {
    Player player('1', nullptr, 0.0f, 0);
    EXPECT_TRUE(key(0.0, keyIndex::left, false).changesNothing(player));
    EXPECT_FALSE(key(0.0, keyIndex::left, true).changesNothing(player));
    EXPECT_FALSE(view(0.0, 0).changesNothing(player));
    key(0.0, keyIndex::left, true).actOn(player);
    EXPECT_TRUE(player.keys[keyIndex::left]);
    EXPECT_TRUE(key(0.0, keyIndex::left, true).changesNothing(player));
    player.keys[keyIndex::jump] = true;
    EXPECT_FALSE(key(0.0, keyIndex::jump, true).changesNothing(player));
}

TEST(Hypotheses, OfOneFutureAreMergedAtTheLowerCost) {
    Hypothesis one;
    one.cost = 3.0;
    one.lost = {1};
    std::vector<Hypothesis> hypotheses;
    merge(hypotheses, Hypothesis(one));
    Hypothesis cheaper = one;
    cheaper.cost = 2.0;
    cheaper.lost = {2};
    merge(hypotheses, Hypothesis(cheaper));
    ASSERT_EQ(hypotheses.size(), 1u);
    EXPECT_EQ(hypotheses[0].lost, cheaper.lost);
    merge(hypotheses, Hypothesis(one));
    EXPECT_EQ(hypotheses[0].cost, 2.0);

    Hypothesis later = one;
    later.next = 1;
    merge(hypotheses, Hypothesis(later));
    EXPECT_EQ(hypotheses.size(), 2u);
    for (const auto change :
         {+[](Player& p) { p.verticalSpeed = 1.0f; },
          +[](Player& p) { p.keys[keyIndex::jump] = true; }, +[](Player& p) { p.inAir = true; },
          +[](Player& p) { p.look.x += 1e-3f; }, +[](Player& p) { p.strafeVector.x += 1e-3f; },
          +[](Player& p) { p.box.max.y += 1.0f; }, +[](Player& p) { p.box.min.y += 1.0f; }}) {
        const std::size_t before = hypotheses.size();
        Hypothesis other = one;
        change(other.player);
        merge(hypotheses, Hypothesis(other));
        EXPECT_EQ(hypotheses.size(), before + 1);
    }
    // What each tick writes anew is no part of the future.
    Hypothesis same = one;
    same.player.velocity.x = 1.0f;
    const std::size_t before = hypotheses.size();
    merge(hypotheses, Hypothesis(same));
    EXPECT_EQ(hypotheses.size(), before);
}

TEST(Hypotheses, AreSeenToTheBit) {
    Player player('1', nullptr, 0.0f, 0);
    PlayerUpdate seen = player.getPlayerUpdate();
    EXPECT_TRUE(isSeen(player, seen));
    seen.position.x = std::nextafter(seen.position.x, 1e9f);
    EXPECT_FALSE(isSeen(player, seen));
    seen = player.getPlayerUpdate();
    seen.rotation.w = std::nextafter(seen.rotation.w, 2.0f);
    EXPECT_FALSE(isSeen(player, seen));
    seen = player.getPlayerUpdate();
    seen.direction.y = std::nextafter(seen.direction.y, 2.0f);
    EXPECT_FALSE(isSeen(player, seen));
}

TEST(Hypotheses, TakeOverWhatIsCloseAndKeepTheRest) {
    Player player('1', nullptr, 0.0f, 3);
    player.look = player.position + player.direction;
    const Player before = player;
    PlayerUpdate seen = player.getPlayerUpdate();
    takeOver(player, seen);
    EXPECT_TRUE(sameFuture(player, before));

    seen.position.x += 0.5f;
    takeOver(player, seen);
    EXPECT_TRUE(isSeen(player, seen));
    EXPECT_EQ(player.look.x, before.look.x + 0.5f);
    EXPECT_EQ(player.box.min.x, Box(seen.position, Player::bodySize).min.x);

    seen.direction.z += 0.25f;
    takeOver(player, seen);
    EXPECT_TRUE(isSeen(player, seen));
    EXPECT_EQ(player.look.z, player.position.z + player.direction.z);

    seen.rotation.w += 0.25f;
    takeOver(player, seen);
    EXPECT_TRUE(isSeen(player, seen));
}

TEST(Hypotheses, AreSeenInEachPartOfAViewWithinCloseness) {
    Player player('1', nullptr, 0.0f, 3);
    for (const float apart : {-0.0015f, -0.0013f, 0.0013f, 0.0015f}) {
        const bool isClose = std::abs(apart) < closeView;
        for (const auto part : {+[](PlayerUpdate& s) { return &s.direction.x; },
                                +[](PlayerUpdate& s) { return &s.direction.y; },
                                +[](PlayerUpdate& s) { return &s.direction.z; },
                                +[](PlayerUpdate& s) { return &s.rotation.x; },
                                +[](PlayerUpdate& s) { return &s.rotation.y; },
                                +[](PlayerUpdate& s) { return &s.rotation.z; },
                                +[](PlayerUpdate& s) { return &s.rotation.w; }}) {
            PlayerUpdate seen = player.getPlayerUpdate();
            *part(seen) += apart;
            EXPECT_EQ(hasView(player, seen, true), isClose) << apart;
            EXPECT_FALSE(hasView(player, seen, false)) << apart;
        }
    }
    for (const float apart : {-0.012f, -0.008f, 0.008f, 0.012f}) {
        const bool isClose = std::abs(apart) < closePosition;
        for (const auto part : {+[](vec3& v) { return &v.x; }, +[](vec3& v) { return &v.y; },
                                +[](vec3& v) { return &v.z; }}) {
            PlayerUpdate seen = player.getPlayerUpdate();
            *part(seen.position) += apart;
            EXPECT_EQ(hasPosition(player, seen, true), isClose) << apart;
            EXPECT_FALSE(hasPosition(player, seen, false)) << apart;
        }
    }
}
