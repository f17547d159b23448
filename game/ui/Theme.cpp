#include "game/ui/Theme.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <unistd.h>

namespace drench::game {

namespace {

constexpr char interRegular[] = "/usr/share/fonts/opentype/inter/Inter-Medium.otf";
constexpr char interStrong[] = "/usr/share/fonts/opentype/inter/Inter-SemiBold.otf";
constexpr char interHeavy[] = "/usr/share/fonts/opentype/inter/Inter-Black.otf";
constexpr char dejavu[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr char dejavuBold[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";

/// Latin, Greek and Cyrillic with their signs, for what people write; the last is U+FFFD.
constexpr ImWchar writing[] = {0x20,   0x17F,  0x218,  0x21B,  0x370,  0x3FF,  0x400,  0x52F,
                               0x1E00, 0x1EFF, 0x2010, 0x2027, 0x2030, 0x205E, 0x20A0, 0x20BF,
                               0x2190, 0x2199, 0x2200, 0x2265, 0xFFFD, 0xFFFD, 0};

/// For our own words.
constexpr ImWchar plain[] = {0x20, 0x7E, 0xB0, 0xB1, 0};

/// The height of a picture in which a unit is a pixel.
constexpr float usualHeight = 720.0f;
constexpr float usualWidth = 1280.0f;

/// Text in a small window does not shrink below this, so that it can still be read.
constexpr float leastAutomatic = 0.875f;

/// Units that the largest page takes.
constexpr float pageWidth = 640.0f;
constexpr float pageHeight = 400.0f;

constexpr float scaleStep = 0.125f;
constexpr float leastScale = 0.5f;

ImFont* load(std::initializer_list<const char*> files, float size, const ImWchar* ranges) {
    ImFontAtlas& atlas = *ImGui::GetIO().Fonts;
    for (const char* file : files) {
        if (::access(file, R_OK) == 0)
            return atlas.AddFontFromFileTTF(file, size, nullptr, ranges);
    }
    ImFontConfig config;
    config.SizePixels = size;
    return atlas.AddFontDefault(&config);
}

ImVec4 part(ImU32 colour) {
    return ImGui::ColorConvertU32ToFloat4(colour);
}

void colourWidgets(ImGuiStyle& style) {
    ImVec4* const colours = style.Colors;
    colours[ImGuiCol_Text] = part(shade::white);
    colours[ImGuiCol_TextDisabled] = part(shade::pale);
    colours[ImGuiCol_WindowBg] = part(shade::glass);
    colours[ImGuiCol_ChildBg] = {0, 0, 0, 0};
    colours[ImGuiCol_PopupBg] = part(IM_COL32(10, 36, 66, 250));
    colours[ImGuiCol_Border] = part(shade::rim);
    colours[ImGuiCol_FrameBg] = part(IM_COL32(120, 190, 245, 34));
    colours[ImGuiCol_FrameBgHovered] = part(IM_COL32(120, 190, 245, 58));
    colours[ImGuiCol_FrameBgActive] = part(IM_COL32(120, 190, 245, 80));
    colours[ImGuiCol_CheckMark] = part(shade::warm);
    colours[ImGuiCol_SliderGrab] = part(shade::water);
    colours[ImGuiCol_SliderGrabActive] = part(shade::warm);
    colours[ImGuiCol_Button] = part(IM_COL32(92, 172, 236, 54));
    colours[ImGuiCol_ButtonHovered] = part(IM_COL32(92, 186, 250, 104));
    colours[ImGuiCol_ButtonActive] = part(IM_COL32(92, 186, 250, 150));
    colours[ImGuiCol_Header] = part(IM_COL32(92, 172, 236, 60));
    colours[ImGuiCol_HeaderHovered] = part(IM_COL32(92, 186, 250, 90));
    colours[ImGuiCol_HeaderActive] = part(IM_COL32(92, 186, 250, 130));
    colours[ImGuiCol_ScrollbarBg] = {0, 0, 0, 0};
    colours[ImGuiCol_ScrollbarGrab] = part(IM_COL32(140, 206, 255, 70));
    colours[ImGuiCol_ScrollbarGrabHovered] = part(IM_COL32(140, 206, 255, 110));
    colours[ImGuiCol_ScrollbarGrabActive] = part(IM_COL32(140, 206, 255, 150));
    colours[ImGuiCol_TextSelectedBg] = part(IM_COL32(64, 186, 255, 110));
    colours[ImGuiCol_NavHighlight] = part(shade::warm);
    colours[ImGuiCol_Separator] = part(shade::rim);
}

} // namespace

ImU32 faded(ImU32 colour, float share) {
    const auto opacity = static_cast<float>(colour >> IM_COL32_A_SHIFT & 0xFFu);
    const auto left = static_cast<ImU32>(std::lround(opacity * std::clamp(share, 0.0f, 1.0f)));
    return (colour & ~IM_COL32_A_MASK) | left << IM_COL32_A_SHIFT;
}

ImU32 shadeOf(arena::Colour colour) {
    return IM_COL32(colour.red, colour.green, colour.blue, 255);
}

void applyStyle(const Theme& theme) {
    ImGuiStyle style;
    style.WindowPadding = {22.0f, 20.0f};
    style.WindowRounding = 16.0f;
    style.WindowBorderSize = 1.0f;
    style.ChildRounding = 10.0f;
    style.PopupRounding = 10.0f;
    style.FramePadding = {12.0f, 7.0f};
    style.FrameRounding = 9.0f;
    style.ItemSpacing = {10.0f, 8.0f};
    style.ItemInnerSpacing = {8.0f, 6.0f};
    style.ScrollbarSize = 12.0f;
    style.ScrollbarRounding = 6.0f;
    style.GrabMinSize = 14.0f;
    style.GrabRounding = 7.0f;
    style.ScaleAllSizes(theme.scale);
    style.WindowBorderSize = std::max(1.0f, std::floor(theme.scale));
    colourWidgets(style);
    ImGui::GetStyle() = style;
}

Fonts buildFonts(float scale) {
    ImGui::GetIO().Fonts->Clear();
    const auto pixels = [&](float units) { return std::round(units * scale); };
    return {load({interRegular, dejavu}, pixels(14.0f), writing),
            load({interRegular, dejavu}, pixels(17.0f), writing),
            load({interStrong, dejavuBold}, pixels(17.0f), writing),
            load({interStrong, dejavuBold}, pixels(26.0f), writing),
            load({interHeavy, dejavuBold}, pixels(64.0f), plain)};
}

float interfaceScaleFor(int width, int height, double interfaceScale) {
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    const float automatic = std::max(std::min(w / usualWidth, h / usualHeight), leastAutomatic);
    const float most = std::min(w / pageWidth, h / pageHeight);
    const float wanted = std::min(automatic * static_cast<float>(interfaceScale), most);
    return std::max(std::floor(wanted / scaleStep) * scaleStep, leastScale);
}

} // namespace drench::game
