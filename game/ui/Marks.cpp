#include "game/ui/Marks.h"

#include <cmath>
#include <iterator>

namespace drench::game {

namespace {

float drawnSize(const ImFont* font) {
    return font->FontSize * ImGui::GetIO().FontGlobalScale;
}

/// Corners of a shape of radius 1, such that all shapes look equally large.
const ImVec2 triangle[] = {{0.0f, -1.15f}, {1.1f, 0.8f}, {-1.1f, 0.8f}};
const ImVec2 square[] = {{-0.88f, -0.88f}, {0.88f, -0.88f}, {0.88f, 0.88f}, {-0.88f, 0.88f}};
const ImVec2 diamond[] = {{0.0f, -1.22f}, {1.05f, 0.0f}, {0.0f, 1.22f}, {-1.05f, 0.0f}};

template<std::size_t count>
void drawPolygon(ImDrawList& list, ImVec2 centre, float radius, const ImVec2 (&corners)[count],
                 ImU32 fill, ImU32 edge, float edgeWidth) {
    ImVec2 points[count];
    for (std::size_t i = 0; i < count; ++i)
        points[i] = {centre.x + radius * corners[i].x, centre.y + radius * corners[i].y};
    list.AddConvexPolyFilled(points, static_cast<int>(count), fill);
    list.AddPolyline(points, static_cast<int>(count), edge, ImDrawFlags_Closed, edgeWidth);
}

} // namespace

void drawMark(ImDrawList& list, ImVec2 centre, float radius, const PlayerMark& mark,
              float opacity) {
    const ImU32 fill = faded(shadeOf(mark.colour), opacity);
    // White, since some liveries are as dark as the glass.
    const ImU32 edge = faded(shade::white, opacity);
    const float edgeWidth = std::max(1.0f, 0.2f * radius);
    switch (mark.shape) {
    case PlayerMark::Shape::circle:
        list.AddCircleFilled(centre, radius, fill);
        list.AddCircle(centre, radius, edge, 0, edgeWidth);
        break;
    case PlayerMark::Shape::triangle:
        drawPolygon(list, centre, radius, triangle, fill, edge, edgeWidth);
        break;
    case PlayerMark::Shape::square:
        drawPolygon(list, centre, radius, square, fill, edge, edgeWidth);
        break;
    case PlayerMark::Shape::diamond:
        drawPolygon(list, centre, radius, diamond, fill, edge, edgeWidth);
        break;
    }
}

ImVec2 sizeOf(const ImFont* font, std::string_view text) {
    return font->CalcTextSizeA(drawnSize(font), FLT_MAX, 0.0f, text.data(),
                               text.data() + text.size());
}

void drawText(ImDrawList& list, const ImFont* font, ImVec2 place, ImU32 colour,
              std::string_view text, bool hasShadow) {
    const auto put = [&](ImVec2 at, ImU32 shade) {
        list.AddText(font, drawnSize(font), at, shade, text.data(), text.data() + text.size());
    };
    if (hasShadow) {
        const float opacity = static_cast<float>(colour >> IM_COL32_A_SHIFT & 0xFFu) / 255.0f;
        const float far = std::max(1.0f, std::round(drawnSize(font) / 14.0f));
        for (const ImVec2 way : {ImVec2(far, far), ImVec2(-far, far), ImVec2(0.0f, -far)})
            put({place.x + way.x, place.y + way.y}, faded(shade::shadow, 0.75f * opacity));
    }
    put(place, colour);
}

void drawGlass(ImDrawList& list, const Theme& theme, ImVec2 from, ImVec2 to, float opacity) {
    const float rounding = std::min(theme.px(12.0f), 0.5f * (to.y - from.y));
    list.AddRectFilled(from, to, faded(shade::thinGlass, opacity), rounding);
    list.AddRect(from, to, faded(shade::rim, opacity), rounding, 0, std::max(1.0f, theme.px(1.0f)));
}

} // namespace drench::game
