#include "game/ui/Diagnostics.h"

#include "common/Decimals.h"
#include "game/ui/Marks.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace drench::game {

namespace {

/// Units.
constexpr float panelWidth = 300.0f;
constexpr float graphHeight = 60.0f;
constexpr float rowHeight = 20.0f;
constexpr float padding = 14.0f;
constexpr float topMargin = 70.0f;
constexpr float leftMargin = 18.0f;

using Rows = std::vector<std::pair<std::string, std::string>>;

std::string withUnit(std::optional<double> value, int digits, const char* unit) {
    return value ? decimals(value, digits) + unit : "-";
}

std::string asPercent(std::optional<double> share, int digits) {
    return share ? decimals(100.0 * *share, digits) + " %" : "-";
}

template<class Whole>
std::string whole(std::optional<Whole> value) {
    return value ? std::to_string(*value) : "-";
}

Rows rowsOf(const DiagnosticsView& view) {
    double interval = 0.0;
    double work = 0.0;
    float longest = 0.0f;
    const auto& frames = view.frames->latest();
    for (const FrameTimes::Times& each : frames) {
        interval += each.interval;
        work += each.work;
        longest = std::max(longest, each.interval);
    }
    const auto count = static_cast<double>(std::max<std::size_t>(frames.size(), 1));
    const double rate = interval > 0.0 ? 1000.0 * count / interval : 0.0;
    return {{"frames", decimals(rate, 0) + " a second"},
            {"work in a frame", decimals(work / count, 1) + " ms"},
            {"longest frame", decimals(longest, 1) + " ms"},
            {"tick", whole(view.tick)},
            {"tick to tick", withUnit(view.period, 2, " ms")},
            {"jitter", withUnit(view.jitter, 1, " ms")},
            {"round trip", withUnit(view.roundTrip, 1, " ms")},
            {"lost of ours", asPercent(view.lossShare, 1)},
            {"snapshots missed", asPercent(view.missedShare, 1)},
            {"prediction explains", asPercent(view.explainedShare, 2)},
            {"breaks", whole(view.breaks)},
            {"hypotheses", whole(view.hypotheses)}};
}

void drawGraph(ImDrawList& list, const Theme& theme, const DiagnosticsView& view, ImVec2 from,
               ImVec2 to) {
    list.AddRectFilled(from, to, IM_COL32(0, 0, 0, 90), theme.px(6.0f));
    const auto most = static_cast<float>(2.5 * view.frameBudget);
    const float height = to.y - from.y;
    const float step = (to.x - from.x) / static_cast<float>(FrameTimes::most);
    const auto y = [&](float milliseconds) {
        return to.y - height * std::min(milliseconds / most, 1.0f);
    };
    float x = from.x;
    for (const FrameTimes::Times& each : view.frames->latest()) {
        const bool isLate = each.interval > static_cast<float>(1.5 * view.frameBudget);
        list.AddRectFilled({x, y(each.interval)}, {x + step, to.y},
                           isLate ? shade::warm : IM_COL32(64, 186, 255, 130));
        list.AddRectFilled({x, y(each.work)}, {x + step, to.y}, IM_COL32(150, 220, 255, 220));
        x += step;
    }
    const float budget = y(static_cast<float>(view.frameBudget));
    list.AddLine({from.x, budget}, {to.x, budget}, faded(shade::white, 0.6f));
}

} // namespace

void drawDiagnostics(const Theme& theme, const DiagnosticsView& view) {
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    const Rows rows = rowsOf(view);
    const float pad = theme.px(padding);
    const ImVec2 from = theme.px(leftMargin, topMargin);
    const float height =
        theme.px(graphHeight + 10.0f + rowHeight * static_cast<float>(rows.size())) + 2.0f * pad;
    const ImVec2 to = {from.x + theme.px(panelWidth), from.y + height};
    list.AddRectFilled(from, to, shade::glass, theme.px(12.0f));
    list.AddRect(from, to, shade::rim, theme.px(12.0f));
    drawGraph(list, theme, view, {from.x + pad, from.y + pad},
              {to.x - pad, from.y + pad + theme.px(graphHeight)});
    float top = from.y + pad + theme.px(graphHeight + 10.0f);
    for (const auto& [what, value] : rows) {
        drawText(list, theme.fonts.small, {from.x + pad, top}, shade::pale, what);
        const float width = sizeOf(theme.fonts.small, value).x;
        drawText(list, theme.fonts.small, {to.x - pad - width, top}, shade::white, value);
        top += theme.px(rowHeight);
    }
}

} // namespace drench::game
