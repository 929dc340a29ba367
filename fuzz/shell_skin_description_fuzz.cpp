// Any bytes as a skin description and as message texts: a result or a SkinError, and a result is consistent.
#include "host/shell/skin/MessageTexts.h"
#include "host/shell/skin/SkinDescription.h"
#include "host/shell/skin/SkinError.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view content(reinterpret_cast<const char*>(data), size);
    try {
        const shell::SkinDescription skin = shell::ReadSkinDescription("fuzz", content);
        for (const shell::ElementDescription& element : skin.elements) {
            const bool hasPlace = element.rect.right > element.rect.left && element.rect.bottom > element.rect.top;
            const bool hasFont = element.font.empty() || skin.fonts.count(element.font) == 1;
            if (!hasPlace || !hasFont || skin.fonts.count("default") != 1) {
                std::abort();
            }
        }
    } catch (const shell::SkinError& error) {
        if (error.line < 0 || error.reason.empty()) {
            std::abort();
        }
    }
    try {
        (void)shell::ReadMessageTexts("fuzz", content);
    } catch (const shell::SkinError&) {
        return 0;
    }
    return 0;
}
