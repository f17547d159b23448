#include "bots/Goals.h"

#include "bots/Geometry.h"

#include <algorithm>

namespace drench::bots {

namespace {

/// Places that are weighed for each goal: fewer are more random.
constexpr int choices = 8;

/// Goals in a row that are better near where somebody was seen.
constexpr int companyGoals = 2;

} // namespace

Goals::Goals(const Roadmap& roadmap, Chance chance)
    : chance_(chance), forHeight_(chance_.between(0.1, 0.9)), forMiddle_(chance_.between(0.6, 1.6)),
      forChange_(chance_.between(0.4, 1.0)), forCompany_(chance_.between(0.5, 1.5)) {
    const auto& places = roadmap.reach.places;
    if (places.empty())
        return;
    const auto [low, high] =
        std::minmax_element(places.begin(), places.end(), [](const auto& a, const auto& b) {
            return a.position.y < b.position.y;
        });
    lowest_ = low->position.y;
    highest_ = high->position.y;
}

double Goals::appeal(const Roadmap& roadmap, int place) const {
    const vec3 position = roadmap.place(place).position;
    const float halfSide = std::max(roadmap.map->width, roadmap.map->length) / 2.0f;
    const vec3 middle(roadmap.map->width / 2.0f, 0.0f, roadmap.map->length / 2.0f);
    const double height = (position.y - lowest_) / std::max(highest_ - lowest_, 1.0f);
    const double nearMiddle = 1.0f - horizontalDistance(position, middle) / halfSide;
    double change = 1.0;
    for (const int other : before_) {
        if (other >= 0)
            change = std::min(
                change,
                static_cast<double>(horizontalDistance(position, roadmap.place(other).position) /
                                    halfSide));
    }
    const double company =
        companyCounts_ > 0 ? 1.0f - horizontalDistance(position, company_) / halfSide : 0.0f;
    return forHeight_ * height + forMiddle_ * nearMiddle + forChange_ * change +
           forCompany_ * company;
}

void Goals::noteCompany(vec3 position) {
    company_ = position;
    companyCounts_ = companyGoals;
}

int Goals::next(const Roadmap& roadmap) {
    const int count = static_cast<int>(roadmap.reach.places.size());
    if (count == 0)
        return -1;
    int best = -1;
    double most = 0.0;
    for (int i = 0; i < choices; ++i) {
        const int place = chance_.below(count);
        const double liked = appeal(roadmap, place);
        if (best < 0 || liked > most) {
            best = place;
            most = liked;
        }
    }
    --companyCounts_;
    std::shift_right(before_.begin(), before_.end(), 1);
    before_[0] = best;
    return best;
}

} // namespace drench::bots
