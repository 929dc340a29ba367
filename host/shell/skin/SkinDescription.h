// What a skin file says, before any picture is loaded. The format is documented in docs/skin.md.
#pragma once

#include "platform/types.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace shell {

enum class Language { Korean, English };
inline constexpr int kLanguageCount = 2;

// One text per language, UTF-8.
using LocalText = std::array<std::string, kLanguageCount>;

// Red, green, blue, alpha; 255 is opaque.
struct Colour {
    std::uint8_t red = 255, green = 255, blue = 255, alpha = 255;
    friend constexpr bool operator==(const Colour&, const Colour&) = default;
};

struct FontDescription {
    std::string family;
    int pixels = 0;
    bool bold = false;
};

enum class ElementKind {
    Button,  // can be pressed: sends its number as a command
    Text,    // shows text
    Picture, // shows a picture
};

enum class Align { Left, Centre, Right };

// When the controls are shown, in which size of the window does the element belong to them?
enum class ControlGroup { None, Full, Small, Both };

// What the shell's own classes use an element for.
enum class Role {
    None,
    TitleBar, // shows the view's title
    ToolBar,
    Toggle,      // switches the view's source
    StationName, // shows the title without what stands in brackets
    RecordSign,  // shown while the view records
    Reason,      // why there is no picture, over the view; then the picture that belongs to it
    ReasonIcon,
    RadioReason, // the same for a view that shows a radio
    RadioReasonIcon,
};
// Is an element with this role painted over what the view paints?
[[nodiscard]] constexpr bool LiesOverTheView(Role role) {
    return role >= Role::Reason;
}

inline constexpr int kStateCount = 3; // normal, pressed, disabled
inline constexpr int kFaceCount = 2;  // normal and alternative

// Pictures of one face; an empty name means "as in the normal state".
struct FaceDescription {
    std::array<std::string, kStateCount> images;
    std::string icon;
};

struct ElementDescription {
    UINT id = 0;
    int line = 0;
    ElementKind kind = ElementKind::Button;
    RECT rect = {};
    // Place in the small window; x or y below zero counts from the right or bottom edge, a width below zero reaches to that far
    // from the right edge. Width 0: none.
    struct SmallPlace {
        int x = 0, y = 0, width = 0, height = 0;
    } small;
    std::array<FaceDescription, kFaceCount> faces;
    int patchBorder = 0; // pictures are stretched but for a border of this many pixels; 0: not stretched
    std::vector<std::string> imageSet;
    std::string font;
    std::array<Colour, kStateCount> colours;
    Align align = Align::Centre;
    RECT textArea = {}; // part of the element, from its upper left corner, in which the text lies; empty: all of it
    bool wrap = false;
    int margin = 0;
    bool textWhenPressed =
        false; // the text takes the place of the picture in the pressed state, and is hidden otherwise
    bool hidden = false;
    int state = 0;
    ControlGroup control = ControlGroup::None;
    Role role = Role::None;
    std::array<LocalText, kFaceCount> captions; // the alternative face has its own when it has pictures of its own
    std::vector<POINT> anchors;
};

struct SkinDescription {
    std::string file;
    std::string resource;
    int width = 0, height = 0;
    std::string background; // picture name; may be empty
    std::map<std::string, FontDescription> fonts;
    std::map<UINT, std::string> bitmaps;
    std::vector<ElementDescription> elements; // in painting order
};

// Reads a description. Throws SkinError with the line and the reason; the result is complete and consistent (fonts are
// declared, numbers are unique, rectangles are not empty), but its pictures have not been looked for.
[[nodiscard]] SkinDescription ReadSkinDescription(std::string_view file, std::string_view content);

} // namespace shell
