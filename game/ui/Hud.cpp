#include "game/ui/Hud.h"

#include "common/Decimals.h"
#include "game/OwnRecordings.h"
#include "game/ui/Marks.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>

namespace drench::game {

namespace {

/// Seconds for which a notice is shown, and the part at the end in which it fades.
constexpr double noticeSeconds = 7.0;
constexpr double noticeFade = 1.0;
constexpr std::size_t mostNoticesShown = 5;

/// Seconds for which one is told of an own hit.
constexpr double hitSeconds = 2.0;

/// World units from which on names are written small.
constexpr float farAway = 1100.0f;

double age(client::Time moment, client::Time now) {
    return std::chrono::duration<double>(now - moment).count();
}

/// 1, and 0 at the end of `shown` seconds.
float fading(double seconds, double shown) {
    return static_cast<float>(std::clamp((shown - seconds) / noticeFade, 0.0, 1.0));
}

/// Draws with the marks, fonts and place of one picture.
class Pen {
  public:
    Pen(const Theme& theme, const Match& match, const HudView& view)
        : theme_(theme), match_(match), view_(view), list_(*ImGui::GetBackgroundDrawList()),
          size_(ImGui::GetIO().DisplaySize) {}

    void labels() const;
    void crosshair() const;
    void points() const;
    void notices() const;
    void topLines() const;
    void recording() const;
    void ownHit() const;
    void soaked() const;
    void captions() const;

  private:
    /// A part of a line: words behind a mark, if they are of a player.
    struct Part {
        std::string_view words;
        char id = 0;
        ImU32 colour = shade::white;
    };

    /// A player of a notice, who may have been unknown when it came.
    Part partOf(const Named& named) const;
    float widthOf(const Part& part) const;
    void write(ImVec2 place, const Part& part, float opacity) const;
    void pill(float top, bool atRight, const std::vector<Part>& parts, float opacity) const;
    void middle(const ImFont* font, float y, ImU32 colour, std::string_view words) const;

    float px(float units) const { return theme_.px(units); }

    const Theme& theme_;
    const Match& match_;
    const HudView& view_;
    ImDrawList& list_;
    ImVec2 size_;
};

/// Units between a mark and its words, and from the middle of a mark to its edge.
constexpr float markGap = 7.0f;
constexpr float markRadius = 6.5f;

/// Units of a pill's height, and from its edges to what stands in it.
constexpr float pillHeight = 30.0f;
constexpr float pillPadding = 13.0f;
constexpr float partGap = 8.0f;
constexpr float margin = 18.0f;

Pen::Part Pen::partOf(const Named& named) const {
    const auto hasName = [&](const MatchPlayer& each) { return each.name == named.name; };
    const auto& players = match_.players();
    if (named.id || std::count_if(players.begin(), players.end(), hasName) != 1)
        return {named.name, named.id};
    return {named.name, std::find_if(players.begin(), players.end(), hasName)->id};
}

float Pen::widthOf(const Part& part) const {
    const float mark = part.id ? px(2.0f * markRadius + markGap) : 0.0f;
    return mark + sizeOf(theme_.fonts.text, part.words).x;
}

void Pen::write(ImVec2 place, const Part& part, float opacity) const {
    const float height = sizeOf(theme_.fonts.text, part.words).y;
    if (part.id) {
        drawMark(list_, {place.x + px(markRadius), place.y + 0.5f * height}, px(markRadius),
                 markOf(part.id, view_.palette), opacity);
        place.x += px(2.0f * markRadius + markGap);
    }
    drawText(list_, part.id ? theme_.fonts.strong : theme_.fonts.text, place,
             faded(part.colour, opacity), part.words);
}

void Pen::pill(float top, bool atRight, const std::vector<Part>& parts, float opacity) const {
    float width = px(2.0f * pillPadding) - px(partGap);
    for (const Part& part : parts)
        width += widthOf(part) + px(partGap);
    // Names are written bolder than measured.
    width += px(4.0f);
    const float left = atRight ? size_.x - px(margin) - width : px(margin);
    drawGlass(list_, theme_, {left, top}, {left + width, top + px(pillHeight)}, opacity);
    float x = left + px(pillPadding);
    for (const Part& part : parts) {
        const float height = sizeOf(theme_.fonts.text, part.words).y;
        write({x, top + 0.5f * (px(pillHeight) - height)}, part, opacity);
        x += widthOf(part) + px(partGap);
    }
}

void Pen::middle(const ImFont* font, float y, ImU32 colour, std::string_view words) const {
    const float width = sizeOf(font, words).x;
    drawText(list_, font, {std::round(0.5f * (size_.x - width)), y}, colour, words, true);
}

void Pen::labels() const {
    for (const Label& label : view_.labels) {
        const bool isFar = label.distance > farAway;
        const ImFont* const font = isFar ? theme_.fonts.small : theme_.fonts.strong;
        const float radius = px(isFar ? 4.5f : markRadius);
        const ImVec2 text = sizeOf(font, label.name);
        const float width = text.x + 2.0f * radius + px(markGap);
        const ImVec2 corner = {std::round(label.place.x * size_.x - 0.5f * width),
                               std::round(label.place.y * size_.y - text.y)};
        drawMark(list_, {corner.x + radius, corner.y + 0.5f * text.y}, radius,
                 markOf(static_cast<char>('1' + label.colour), view_.palette));
        drawText(list_, font, {corner.x + 2.0f * radius + px(markGap), corner.y}, shade::white,
                 label.name, true);
    }
}

void Pen::crosshair() const {
    const ImVec2 centre = {0.5f * size_.x, 0.5f * size_.y};
    const ImU32 dark = faded(shade::shadow, 0.7f);
    // Dark around bright, so that it is seen on both.
    list_.AddCircle(centre, px(10.0f), dark, 48, px(3.6f));
    list_.AddCircleFilled(centre, px(3.6f), dark, 20);
    list_.AddCircle(centre, px(10.0f), shade::white, 48, px(1.6f));
    list_.AddCircleFilled(centre, px(2.1f), shade::white, 20);
}

void Pen::points() const {
    const MatchPlayer* const self = match_.self();
    if (!self)
        return;
    const std::string count = std::to_string(self->points);
    const std::string_view unit = self->points == 1 ? "point" : "points";
    const ImVec2 number = sizeOf(theme_.fonts.large, count);
    const ImVec2 words = sizeOf(theme_.fonts.text, unit);
    const float height = px(44.0f);
    const float left = px(margin);
    const float top = px(margin);
    const float numberLeft = left + px(16.0f + 2.0f * 9.0f + 10.0f);
    const float right = numberLeft + number.x + px(7.0f) + words.x + px(16.0f);
    drawGlass(list_, theme_, {left, top}, {right, top + height});
    drawMark(list_, {left + px(25.0f), top + 0.5f * height}, px(9.0f),
             markOf(self->id, view_.palette));
    const float numberTop = top + 0.5f * (height - number.y);
    drawText(list_, theme_.fonts.large, {numberLeft, numberTop}, shade::white, count);
    // On the line that the number stands on.
    const float below = 0.78f * (number.y - words.y);
    drawText(list_, theme_.fonts.text, {numberLeft + number.x + px(7.0f), numberTop + below},
             shade::pale, unit);
}

void Pen::notices() const {
    std::size_t shown = 0;
    float top = px(margin);
    for (auto notice = match_.notices().rbegin();
         notice != match_.notices().rend() && shown < mostNoticesShown; ++notice, ++shown) {
        const float opacity = fading(age(notice->moment, view_.now), noticeSeconds);
        if (opacity <= 0.0f)
            return;
        switch (notice->kind) {
        case MatchNotice::Kind::soaking:
            pill(top, true,
                 {partOf(notice->who), {"soaked", 0, shade::water}, partOf(notice->whom)}, opacity);
            break;
        case MatchNotice::Kind::joined:
            pill(top, true, {partOf(notice->who), {"joined", 0, shade::pale}}, opacity);
            break;
        case MatchNotice::Kind::left:
            pill(top, true, {partOf(notice->who), {"left", 0, shade::pale}}, opacity);
            break;
        case MatchNotice::Kind::other:
            pill(top, true, {{notice->words, 0, shade::pale}}, opacity);
            break;
        }
        top += px(pillHeight + 6.0f);
    }
}

void Pen::topLines() const {
    float top = px(margin);
    const auto line = [&](const std::string& words, bool isWarning) {
        const float sign = isWarning ? px(18.0f) : 0.0f;
        const ImVec2 text = sizeOf(theme_.fonts.text, words);
        const float width = text.x + px(2.0f * pillPadding) + sign;
        const float left = std::round(0.5f * (size_.x - width));
        drawGlass(list_, theme_, {left, top}, {left + width, top + px(pillHeight)});
        const ImVec2 at = {left + px(pillPadding + 5.0f), top + px(0.5f * pillHeight)};
        if (isWarning)
            list_.AddTriangleFilled({at.x, at.y - px(7.0f)}, {at.x + px(7.5f), at.y + px(6.0f)},
                                    {at.x - px(7.5f), at.y + px(6.0f)}, shade::warm);
        drawText(list_, theme_.fonts.text,
                 {left + px(pillPadding) + sign, top + 0.5f * (px(pillHeight) - text.y)},
                 isWarning ? shade::warm : shade::white, words);
        top += px(pillHeight + 6.0f);
    };
    for (const std::string& words : view_.warnings)
        line(words, true);
    for (const std::string& words : view_.news)
        line(words, false);
}

void Pen::recording() const {
    if (!view_.recordingSeconds)
        return;
    const std::string words = lengthWords(std::chrono::duration<double>(*view_.recordingSeconds));
    const ImVec2 text = sizeOf(theme_.fonts.text, words);
    const float left = px(margin);
    const float top = px(margin + 44.0f + 8.0f);
    const float width = text.x + px(2.0f * pillPadding + 18.0f);
    drawGlass(list_, theme_, {left, top}, {left + width, top + px(pillHeight)});
    list_.AddCircleFilled({left + px(pillPadding + 5.0f), top + px(0.5f * pillHeight)}, px(5.5f),
                          shade::recording, 24);
    drawText(list_, theme_.fonts.text,
             {left + px(pillPadding + 18.0f), top + 0.5f * (px(pillHeight) - text.y)}, shade::white,
             words);
}

void Pen::ownHit() const {
    const auto hit = std::find_if(match_.notices().rbegin(), match_.notices().rend(),
                                  [&](const MatchNotice& notice) {
                                      return notice.kind == MatchNotice::Kind::soaking &&
                                             notice.who.id && notice.who.id == match_.ownId();
                                  });
    if (hit == match_.notices().rend())
        return;
    const float opacity = fading(age(hit->moment, view_.now), hitSeconds);
    if (opacity > 0.0f)
        middle(theme_.fonts.large, 0.5f * size_.y + px(52.0f), faded(shade::water, opacity),
               "You soaked " + hit->whom.name + "!");
}

void Pen::soaked() const {
    const MatchPlayer* const self = match_.self();
    if (!self || !self->soakedSince)
        return;
    const double left = secondsUntilReturn(*self, view_.now);
    const std::string who =
        self->soakedBy.empty() ? "You are soaked" : "Soaked by " + self->soakedBy;
    const std::string when =
        left > 0.0 ? "back in " + decimals(std::ceil(left), 0) + " s" : "back any moment";
    const float textWidth =
        std::max(sizeOf(theme_.fonts.large, who).x, sizeOf(theme_.fonts.text, when).x);
    const float width = std::max(textWidth + px(52.0f), px(240.0f));
    const ImVec2 from = {std::round(0.5f * (size_.x - width)), 0.5f * size_.y - px(130.0f)};
    const ImVec2 to = {from.x + width, from.y + px(92.0f)};
    drawGlass(list_, theme_, from, to);
    middle(theme_.fonts.large, from.y + px(14.0f), shade::white, who);
    middle(theme_.fonts.text, from.y + px(48.0f), shade::pale, when);
    const auto share = static_cast<float>(
        std::clamp(1.0 - 1000.0 * left / static_cast<double>(Player::respawnDelay), 0.0, 1.0));
    const float barLeft = from.x + px(26.0f);
    const float barWidth = width - px(52.0f);
    const float barTop = to.y - px(15.0f);
    list_.AddRectFilled({barLeft, barTop}, {barLeft + barWidth, barTop + px(4.0f)},
                        IM_COL32(120, 190, 245, 60), px(2.0f));
    list_.AddRectFilled({barLeft, barTop}, {barLeft + share * barWidth, barTop + px(4.0f)},
                        shade::water, px(2.0f));
}

void Pen::captions() const {
    if (!view_.captions)
        return;
    float bottom = size_.y - px(margin + view_.foot);
    for (const Captions::Line& line : *view_.captions) {
        const ImVec2 text = sizeOf(theme_.fonts.text, line.words);
        const float width = text.x + px(2.0f * pillPadding);
        const float left = std::round(0.5f * (size_.x - width));
        const float top = bottom - px(pillHeight);
        drawGlass(list_, theme_, {left, top}, {left + width, bottom});
        drawText(list_, theme_.fonts.text,
                 {left + px(pillPadding), top + 0.5f * (px(pillHeight) - text.y)}, shade::white,
                 line.words);
        bottom -= px(pillHeight + 6.0f);
    }
}

} // namespace

void drawHud(const Theme& theme, const Match& match, const HudView& view) {
    const Pen pen(theme, match, view);
    pen.labels();
    if (view.hasCrosshair)
        pen.crosshair();
    pen.points();
    pen.notices();
    pen.topLines();
    pen.recording();
    pen.ownHit();
    pen.soaked();
    pen.captions();
}

} // namespace drench::game
