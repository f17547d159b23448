#pragma once

#include "game/Settings.h"
#include "game/ui/Theme.h"

#include <string>

namespace drench::game {

/// A window in the middle of the picture while it lives, of a width in units. A height of 0 fits
/// what is in it.
class Page {
  public:
    Page(const Theme& theme, const char* name, float width, float height = 0.0f);
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;
    ~Page();
};

/// Text in a font, for as long as it lives.
class InFont {
  public:
    explicit InFont(ImFont* font) { ImGui::PushFont(font); }
    InFont(const InFont&) = delete;
    InFont& operator=(const InFont&) = delete;
    ~InFont() { ImGui::PopFont(); }
};

/// Darkens the picture behind a page.
void dimBehind(float opacity);

void heading(const Theme& theme, const char* words);

/// Text that breaks at the end of its line, in the paler colour.
void paleText(const std::string& words);

/// A button as wide as the page or, above 0, of that many units. The one that is most likely wanted
/// is warm.
bool wideButton(const Theme& theme, const char* words, bool isWarm = false, float width = 0.0f);

// Rows of settings: words at the left, a control at the right. True if the value changed. `hint`
// may be null; it is told below the words.

bool switchRow(const Theme& theme, const char* words, bool& value, const char* hint = nullptr);

/// @param format  as printf's, of a double
/// @param factor  what is shown for a value of 1: 100 for shares shown as percents
bool sliderRow(const Theme& theme, const char* words, double& value, Limits<double> limits,
               const char* format, double factor = 1.0, bool isLogarithmic = false,
               const char* hint = nullptr);

/// A row of another kind, with the cursor at the control's place.
struct Row {
    /// Pixels for the control.
    float width;
    float top;
    bool hasHint;
};
Row beginRow(const Theme& theme, const char* words, const char* hint = nullptr);

/// To be called after the row's control.
void endRow(const Row& row);

/// Buttons side by side of which one is chosen; as wide as `width` pixels in sum.
bool choice(const Theme& theme, const char* id, const char* const* words, int count, int& chosen,
            float width);

} // namespace drench::game
