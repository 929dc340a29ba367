#include "host/shell/skin/SkinDescription.h"

#include "host/shell/skin/DescriptionLine.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace shell {

namespace {

constexpr int kMaxCoordinate = 4096;
constexpr UINT kMaxId = 0xFFFF;
constexpr std::size_t kMaxElements = 1000;

class Reader {
public:
    Reader(std::string_view file, std::string_view content) : lines(file, content) { skin.file = file; }

    SkinDescription Read() {
        while (auto next = lines.Next()) {
            line = std::move(*next);
            if (!ReadHeader() && !ReadElementStart() && !ReadAttribute()) {
                lines.Fail("unknown keyword '" + line.keyword + "'");
            }
        }
        CheckWhole();
        return std::move(skin);
    }

private:
    // ---- arguments -------------------------------------------------------------------------------------------------

    void Expect(std::size_t least, std::size_t most) const {
        if (line.arguments.size() < least || line.arguments.size() > most) {
            lines.Fail("'" + line.keyword + "' has " + std::to_string(line.arguments.size()) + " arguments, expected " +
                       (least == most ? std::to_string(least) : "at least " + std::to_string(least)));
        }
    }
    void Expect(std::size_t count) const { Expect(count, count); }

    int Number(std::size_t index, int least, int most) const {
        const std::string& text = line.arguments[index];
        int value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size()) {
            lines.Fail("'" + text + "' is not a whole number");
        }
        if (value < least || value > most) {
            lines.Fail("'" + text + "' is outside " + std::to_string(least) + ".." + std::to_string(most));
        }
        return value;
    }

    Colour ReadColour(std::size_t index) const {
        const std::string& text = line.arguments[index];
        std::uint32_t value = 0;
        const auto [end, error] =
            std::from_chars(text.data() + std::min<std::size_t>(1, text.size()), text.data() + text.size(), value, 16);
        const bool whole = error == std::errc() && end == text.data() + text.size();
        if (!whole || text[0] != '#' || (text.size() != 7 && text.size() != 9)) {
            lines.Fail("'" + text + "' is not a colour (#rrggbb or #rrggbbaa)");
        }
        if (text.size() == 7) {
            value = (value << 8) | 0xFF;
        }
        return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    }

    // A picture's name becomes a file name, so it must not lead out of the picture folder.
    const std::string& Name(std::size_t index) const {
        const std::string& name = line.arguments[index];
        const bool plain = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
        });
        if (!plain) {
            lines.Fail("'" + name + "' is not a name (letters, digits, - and _)");
        }
        return name;
    }

    template <typename Value>
    Value OneOf(std::size_t index, std::initializer_list<std::pair<const char*, Value>> words) const {
        std::string known;
        for (const auto& [word, value] : words) {
            if (line.arguments[index] == word) {
                return value;
            }
            known += known.empty() ? word : std::string(", ") + word;
        }
        lines.Fail("'" + line.arguments[index] + "' is none of: " + known);
    }

    // ---- lines -----------------------------------------------------------------------------------------------------

    bool ReadHeader() {
        const std::string& key = line.keyword;
        if (key == "resource") {
            Expect(1);
            skin.resource = Name(0);
        } else if (key == "size") {
            Expect(2);
            skin.width = Number(0, 1, kMaxCoordinate);
            skin.height = Number(1, 1, kMaxCoordinate);
        } else if (key == "background") {
            Expect(1);
            skin.background = Name(0);
        } else if (key == "bitmap") {
            Expect(2);
            skin.bitmaps[static_cast<UINT>(Number(0, 1, kMaxId))] = Name(1);
        } else if (key == "define-font") {
            Expect(3, 4);
            FontDescription font{line.arguments[1], Number(2, 4, 200), false};
            if (line.arguments.size() == 4) {
                font.bold = OneOf<bool>(3, {{"bold", true}, {"regular", false}});
            }
            skin.fonts[Name(0)] = std::move(font);
        } else {
            return false;
        }
        return true;
    }

    bool ReadElementStart() {
        ElementDescription element;
        if (line.keyword == "button") {
            element.kind = ElementKind::Button;
        } else if (line.keyword == "text") {
            element.kind = ElementKind::Text;
        } else if (line.keyword == "picture") {
            element.kind = ElementKind::Picture;
        } else {
            return false;
        }
        Expect(1);
        element.id = static_cast<UINT>(Number(0, 1, kMaxId));
        element.line = line.number;
        if (!seen.insert(element.id).second) {
            lines.Fail("element " + std::to_string(element.id) + " is described twice");
        }
        if (skin.elements.size() == kMaxElements) {
            lines.Fail("too many elements");
        }
        skin.elements.push_back(std::move(element));
        return true;
    }

    bool ReadAttribute() {
        if (skin.elements.empty()) {
            return false;
        }
        ElementDescription& element = skin.elements.back();
        return ReadPlace(element) || ReadLook(element) || ReadText(element) || ReadBehaviour(element);
    }

    bool ReadPlace(ElementDescription& element) {
        if (line.keyword == "rect") {
            Expect(4);
            element.rect.left = Number(0, -kMaxCoordinate, kMaxCoordinate);
            element.rect.top = Number(1, -kMaxCoordinate, kMaxCoordinate);
            element.rect.right = element.rect.left + Number(2, 1, kMaxCoordinate);
            element.rect.bottom = element.rect.top + Number(3, 1, kMaxCoordinate);
        } else if (line.keyword == "small") {
            Expect(4);
            element.small = {Number(0, -kMaxCoordinate, kMaxCoordinate), Number(1, -kMaxCoordinate, kMaxCoordinate),
                             Number(2, -kMaxCoordinate, kMaxCoordinate), Number(3, 1, kMaxCoordinate)};
            if (element.small.width == 0) {
                lines.Fail("'small' has no width");
            }
        } else if (line.keyword == "text-area") {
            Expect(4);
            element.textArea.left = Number(0, 0, kMaxCoordinate);
            element.textArea.top = Number(1, 0, kMaxCoordinate);
            element.textArea.right = element.textArea.left + Number(2, 1, kMaxCoordinate);
            element.textArea.bottom = element.textArea.top + Number(3, 1, kMaxCoordinate);
        } else if (line.keyword == "anchors") {
            Expect(2, 64);
            if (line.arguments.size() % 2 != 0) {
                lines.Fail("'anchors' needs pairs of x and y");
            }
            element.anchors.clear();
            for (std::size_t i = 0; i < line.arguments.size(); i += 2) {
                element.anchors.push_back(
                    {Number(i, -kMaxCoordinate, kMaxCoordinate), Number(i + 1, -kMaxCoordinate, kMaxCoordinate)});
            }
        } else {
            return false;
        }
        return true;
    }

    bool ReadLook(ElementDescription& element) {
        const std::string& key = line.keyword;
        if (key == "face" || key == "other-face") {
            Expect(1, kStateCount);
            FaceDescription& face = element.faces[key == "face" ? 0 : 1];
            for (std::size_t i = 0; i < line.arguments.size(); ++i) {
                face.images[i] = Name(i);
            }
        } else if (key == "icon" || key == "other-icon") {
            Expect(1);
            element.faces[key == "icon" ? 0 : 1].icon = Name(0);
        } else if (key == "patch") {
            Expect(1);
            element.patchBorder = Number(0, 1, 200);
        } else if (key == "images") {
            Expect(1, 64);
            element.imageSet.clear();
            for (std::size_t i = 0; i < line.arguments.size(); ++i) {
                element.imageSet.push_back(Name(i));
            }
        } else {
            return false;
        }
        return true;
    }

    bool ReadText(ElementDescription& element) {
        const std::string& key = line.keyword;
        if (key == "caption" || key == "other-caption") {
            Expect(kLanguageCount);
            element.captions[key == "caption" ? 0 : 1] = {line.arguments[0], line.arguments[1]};
        } else if (key == "font") {
            Expect(1);
            element.font = Name(0);
        } else if (key == "colour") {
            Expect(1, kStateCount);
            for (std::size_t i = 0; i < kStateCount; ++i) {
                element.colours[i] = ReadColour(std::min(i, line.arguments.size() - 1));
            }
        } else if (key == "align") {
            Expect(1);
            element.align =
                OneOf<Align>(0, {{"left", Align::Left}, {"centre", Align::Centre}, {"right", Align::Right}});
        } else if (key == "margin") {
            Expect(1);
            element.margin = Number(0, 0, kMaxCoordinate);
        } else if (key == "wrap") {
            Expect(0);
            element.wrap = true;
        } else if (key == "text-when-pressed") {
            Expect(0);
            element.textWhenPressed = true;
        } else {
            return false;
        }
        return true;
    }

    bool ReadBehaviour(ElementDescription& element) {
        const std::string& key = line.keyword;
        if (key == "hidden") {
            Expect(0);
            element.hidden = true;
        } else if (key == "state") {
            Expect(1);
            element.state = Number(0, 0, kStateCount - 1);
        } else if (key == "control") {
            Expect(1);
            element.control = OneOf<ControlGroup>(
                0, {{"full", ControlGroup::Full}, {"small", ControlGroup::Small}, {"both", ControlGroup::Both}});
        } else if (key == "role") {
            Expect(1);
            element.role = OneOf<Role>(0, {{"title-bar", Role::TitleBar},
                                           {"tool-bar", Role::ToolBar},
                                           {"toggle", Role::Toggle},
                                           {"station-name", Role::StationName},
                                           {"record-sign", Role::RecordSign},
                                           {"reason", Role::Reason},
                                           {"reason-icon", Role::ReasonIcon},
                                           {"radio-reason", Role::RadioReason},
                                           {"radio-reason-icon", Role::RadioReasonIcon}});
        } else {
            return false;
        }
        return true;
    }

    void CheckWhole() const {
        const auto fail = [this](int where, const std::string& reason) { throw SkinError(skin.file, where, reason); };
        if (skin.resource.empty()) {
            fail(0, "no 'resource' line");
        }
        if (skin.width == 0) {
            fail(0, "no 'size' line");
        }
        if (skin.fonts.find("default") == skin.fonts.end()) {
            fail(0, "no font named 'default'");
        }
        for (const ElementDescription& element : skin.elements) {
            if (element.rect.right == element.rect.left) {
                fail(element.line, "element " + std::to_string(element.id) + " has no 'rect'");
            }
            if (!element.font.empty() && skin.fonts.find(element.font) == skin.fonts.end()) {
                fail(element.line,
                     "element " + std::to_string(element.id) + " uses the unknown font '" + element.font + "'");
            }
        }
    }

    DescriptionReader lines;
    DescriptionLine line;
    SkinDescription skin;
    std::set<UINT> seen;
};

} // namespace

SkinDescription ReadSkinDescription(std::string_view file, std::string_view content) {
    return Reader(file, content).Read();
}

} // namespace shell
