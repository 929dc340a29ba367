#include "host/shell/skin/MessageTexts.h"

#include "host/shell/skin/DescriptionLine.h"

#include <charconv>

namespace shell {

MessageTexts ReadMessageTexts(std::string_view file, std::string_view content) {
    DescriptionReader lines(file, content);
    MessageTexts texts;
    std::map<WORD, LocalText>* table = nullptr;
    while (const auto line = lines.Next()) {
        const auto& arguments = line->arguments;
        if (line->keyword == "resource" && arguments.size() == 1) {
            table = &texts[arguments[0]];
        } else if (line->keyword == "message" && arguments.size() == 1 + kLanguageCount) {
            WORD number = 0;
            const char* end = arguments[0].data() + arguments[0].size();
            const auto [stopped, error] = std::from_chars(arguments[0].data(), end, number);
            if (error != std::errc() || stopped != end) {
                lines.Fail("'" + arguments[0] + "' is not a text number");
            }
            if (!table) {
                lines.Fail("a message before the first 'resource' line");
            }
            if (!table->emplace(number, LocalText{arguments[1], arguments[2]}).second) {
                lines.Fail("message " + arguments[0] + " is given twice");
            }
        } else {
            lines.Fail("expected 'resource NAME' or 'message NUMBER \"Korean\" \"English\"'");
        }
    }
    return texts;
}

} // namespace shell
