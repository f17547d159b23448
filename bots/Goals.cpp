#include "bots/Goals.h"

#include "bots/Geometry.h"
#include "bots/Sightline.h"

#include <algorithm>

namespace drench::bots {

namespace {

/// Places weighed for a goal to one's taste. With fewer, goals are more random, and players who
/// like the same places meet less often.
constexpr int choices = 30;

/// Places of which the one longest out of sight is chosen: with fewer, goals are more random.
constexpr int patrolChoices = 24;

/// World units up to which a place counts as seen. All of an open arena is in sight from its
/// middle, but a player in a far corner is not found from there.
constexpr float nearSight = 400.0f;

/// Cosine of half the angle within which a place counts as seen. It is narrower than the field of
/// view, since a player at its edge is noticed late.
constexpr float cosineOfView = 0.7f;

/// Places that one look takes in. Three thousand have had their turn after a second.
constexpr std::size_t placesPerLook = 48;

/// Goals in a row that are better near the last sighting of somebody.
constexpr int companyGoals = 2;

} // namespace

Goals::Goals(const Roadmap& roadmap, double curiosity, Chance chance)
    : chance_(chance), curiosity_(curiosity), forHeight_(chance_.between(0.1, 0.9)),
      forMiddle_(chance_.between(1.1, 2.1)), forChange_(chance_.between(0.4, 1.0)),
      forCompany_(chance_.between(0.5, 1.5)) {
    const auto& places = roadmap.reach.places;
    seenAt_.assign(places.size(), 0L);
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
    if (before_ >= 0)
        change = std::min(
            1.0, static_cast<double>(horizontalDistance(position, roadmap.place(before_).position) /
                                     halfSide));
    const double company =
        companyCounts_ > 0 ? 1.0f - horizontalDistance(position, company_) / halfSide : 0.0f;
    return forHeight_ * height + forMiddle_ * nearMiddle + forChange_ * change +
           forCompany_ * company;
}

void Goals::look(const Roadmap& roadmap, vec3 eye, vec3 direction) {
    ++tick_;
    const auto isSeen = [&](vec3 body) {
        const vec3 way = body - eye;
        const float distance = way.length();
        return distance <= nearSight && way.dot(direction) >= cosineOfView * distance &&
               sightline(roadmap.grid, eye, body) != Sightline::hidden;
    };
    for (std::size_t i = 0; i < std::min(placesPerLook, seenAt_.size()); ++i) {
        nextLook_ = (nextLook_ + 1) % seenAt_.size();
        if (isSeen(roadmap.reach.places[nextLook_].position))
            seenAt_[nextLook_] = tick_;
    }
}

void Goals::noteCompany(vec3 position) {
    company_ = position;
    companyCounts_ = companyGoals;
}

int Goals::next(const Roadmap& roadmap) {
    const int count = static_cast<int>(roadmap.reach.places.size());
    if (count == 0)
        return -1;
    const bool patrols = companyCounts_ <= 0 && chance_.happens(curiosity_);
    const auto value = [&](int place) {
        return patrols ? -static_cast<double>(seenAt_[static_cast<std::size_t>(place)])
                       : appeal(roadmap, place);
    };
    int best = -1;
    double most = 0.0;
    for (int i = 0; i < (patrols ? patrolChoices : choices); ++i) {
        const int place = chance_.below(count);
        const double worth = value(place);
        if (best < 0 || worth > most) {
            best = place;
            most = worth;
        }
    }
    before_ = best;
    --companyCounts_;
    return best;
}

} // namespace drench::bots
