#include "game/ui/SettingsPage.h"

#include "game/ui/Widgets.h"

#include <array>
#include <cmath>
#include <iterator>
#include <string>

namespace drench::game {

namespace {

constexpr float pageWidth = 720.0f;
constexpr float pageHeight = 560.0f;

constexpr const char* tabs[] = {"Controls", "Keys", "Picture", "Sound", "Seeing"};

bool drawControls(const Theme& theme, Settings& settings) {
    bool changed =
        sliderRow(theme, "Mouse speed", settings.sensitivity, sensitivityLimits, "%.2f", 1.0, true);
    changed |= switchRow(theme, "Left and right swapped", settings.invertX);
    changed |= switchRow(theme, "Up and down swapped", settings.invertY,
                         "Mouse forward looks down, as in an aeroplane.");
    changed |= sliderRow(theme, "Speed of the gamepad's stick", settings.stickSensitivity,
                         stickSensitivityLimits, "%.1f");
    changed |= switchRow(theme, "A click begins and ends firing", settings.toggleFire,
                         "Instead of holding the button down.");
    changed |= switchRow(theme, "Others where my shots meet them", settings.showWhereShotsMeet,
                         "Draws them ahead by the round trip, for aiming over a slow line.");
    return changed;
}

bool drawFrameLimit(const Theme& theme, Settings& settings, double screenRate) {
    constexpr std::array<int, 6> limits = {0, 30, 60, 90, 144, 240};
    const Row row = beginRow(theme, "Most frames a second",
                             settings.vsync ? "And no more than the screen shows." : nullptr);
    ImGui::SetNextItemWidth(row.width);
    const auto words = [&](int limit) {
        return limit > 0 ? std::to_string(limit)
                         : "as the screen: " + std::to_string(std::lround(screenRate));
    };
    bool changed = false;
    if (ImGui::BeginCombo("##limit", words(settings.frameLimit).c_str())) {
        for (const int limit : limits) {
            if (ImGui::Selectable(words(limit).c_str(), limit == settings.frameLimit)) {
                settings.frameLimit = limit;
                changed = true;
            }
        }
        ImGui::EndCombo();
    }
    endRow(row);
    return changed;
}

bool drawQuality(const Theme& theme, Settings& settings) {
    constexpr const char* words[] = {"Automatic", "Plain", "Full"};
    static_assert(std::size(words) == pictureNames.size());
    const Row row = beginRow(theme, "Picture", "Full has textures and smooth edges.");
    int chosen = static_cast<int>(settings.picture);
    const bool changed =
        choice(theme, "quality", words, static_cast<int>(std::size(words)), chosen, row.width);
    settings.picture = static_cast<Picture>(chosen);
    endRow(row);
    return changed;
}

bool drawPicture(const Theme& theme, Settings& settings, double screenRate) {
    bool changed =
        sliderRow(theme, "Field of view", settings.fieldOfView, fieldOfViewLimits, "%.0f\xC2\xB0");
    changed |= switchRow(theme, "Full screen", settings.fullScreen);
    changed |= switchRow(theme, "Wait for the screen (vsync)", settings.vsync,
                         "No torn picture, but a little later.");
    changed |= drawQuality(theme, settings);
    changed |= drawFrameLimit(theme, settings, screenRate);
    changed |= sliderRow(theme, "Sharpness of the picture", settings.renderScale, renderScaleLimits,
                         "%.0f %%", 100.0, false, "Less is faster. Text stays sharp.");
    changed |= sliderRow(theme, "Size of text and controls", settings.interfaceScale,
                         interfaceScaleLimits, "%.0f %%", 100.0);
    return changed;
}

bool drawSound(const Theme& theme, Settings& settings) {
    bool changed =
        sliderRow(theme, "All sounds", settings.masterVolume, volumeLimits, "%.0f %%", 100.0);
    changed |= sliderRow(theme, "Water, steps and hits", settings.effectsVolume, volumeLimits,
                         "%.0f %%", 100.0);
    changed |= switchRow(theme, "Captions", settings.captions,
                         "Names what is heard and where it comes from.");
    return changed;
}

bool drawSeeing(const Theme& theme, Settings& settings) {
    bool changed = switchRow(theme, "Colours for the colour-blind", settings.colourBlind,
                             "Everybody has a shape of their own too.");
    changed |=
        switchRow(theme, "Less motion", settings.lessMotion, "Nothing sways, kicks or bobs.");
    changed |= switchRow(theme, "Captions", settings.captions,
                         "Names what is heard and where it comes from.");
    changed |= sliderRow(theme, "Size of text and controls", settings.interfaceScale,
                         interfaceScaleLimits, "%.0f %%", 100.0);
    return changed;
}

} // namespace

SettingsPage::Outcome SettingsPage::draw(const Theme& theme, Settings& settings,
                                         double screenRate) {
    dimBehind(0.35f);
    const Page page(theme, "settings", pageWidth, pageHeight);
    heading(theme, "Settings");
    ImGui::Spacing();
    if (choice(theme, "tabs", tabs, static_cast<int>(std::size(tabs)), tab_,
               ImGui::GetContentRegionAvail().x))
        keys_.stopWaiting();
    ImGui::Spacing();
    const float foot = theme.px(40.0f) + ImGui::GetStyle().ItemSpacing.y;
    Outcome outcome;
    ImGui::BeginChild("rows", {0.0f, -foot - theme.px(6.0f)});
    outcome.changed = drawTab(theme, settings, screenRate);
    ImGui::EndChild();
    const float footTop = ImGui::GetCursorPosY();
    if (wideButton(theme, "Done", true, 140.0f))
        outcome.closed = true;
    const char* const remark = tab_ == 1
                                   ? "Click a key, then press the new one. Backspace takes it away."
                                   : "Changes act and are kept at once.";
    const float middle = 0.5f * (theme.px(40.0f) - ImGui::GetTextLineHeight());
    ImGui::SetCursorPos({ImGui::GetCursorPosX() + theme.px(160.0f), footTop + middle});
    paleText(remark);
    return outcome;
}

bool SettingsPage::drawTab(const Theme& theme, Settings& settings, double screenRate) {
    switch (tab_) {
    case 0:
        return drawControls(theme, settings);
    case 1:
        return keys_.draw(theme, settings.bindings);
    case 2:
        return drawPicture(theme, settings, screenRate);
    case 3:
        return drawSound(theme, settings);
    default:
        return drawSeeing(theme, settings);
    }
}

} // namespace drench::game
