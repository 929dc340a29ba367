#include "host/shell/skin/DescriptionLine.h"

namespace shell {

namespace {

constexpr bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

// A colour begins with # too, so a comment behind a keyword needs a blank after its #.
bool StartsComment(std::string_view line, bool firstWord) {
    return line.front() == '#' && (firstWord || line.size() == 1 || IsBlank(line[1]));
}

constexpr bool IsContinuation(unsigned char c) {
    return (c & 0xC0) == 0x80;
}

// Bytes that form one well-formed UTF-8 character at the start of the text, or 0.
std::size_t CharacterLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) {
        return 0;
    }
    std::uint32_t value = first & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsContinuation(static_cast<unsigned char>(text[i]))) {
            return 0;
        }
        value = (value << 6) | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    }
    const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
    const bool surrogate = value >= 0xD800 && value < 0xE000;
    return overlong || surrogate || value > 0x10FFFF ? 0 : length;
}

bool IsValidUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

// Takes the quoted text at the start of `line`; the opening quote is already gone.
bool TakeQuoted(std::string_view& line, std::string& word) {
    while (!line.empty()) {
        char c = line.front();
        line.remove_prefix(1);
        if (c == '"') {
            return line.empty() || IsBlank(line.front());
        }
        if (c == '\\') {
            if (line.empty()) {
                return false;
            }
            c = line.front();
            line.remove_prefix(1);
            if (c == 'n') {
                c = '\n';
            } else if (c != '"' && c != '\\') {
                return false;
            }
        }
        word += c;
    }
    return false;
}

void TakePlain(std::string_view& line, std::string& word) {
    while (!line.empty() && !IsBlank(line.front())) {
        word += line.front();
        line.remove_prefix(1);
    }
}

} // namespace

std::optional<DescriptionLine> DescriptionReader::Next() {
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        ++number;
        if (line.find('\0') != std::string_view::npos || !IsValidUtf8(line)) {
            Fail("the line is not UTF-8 text");
        }
        std::vector<std::string> words;
        for (;;) {
            while (!line.empty() && IsBlank(line.front())) {
                line.remove_prefix(1);
            }
            if (line.empty() || StartsComment(line, words.empty())) {
                break;
            }
            std::string word;
            if (line.front() == '"') {
                line.remove_prefix(1);
                if (!TakeQuoted(line, word)) {
                    Fail("a quoted text is not closed properly");
                }
            } else {
                TakePlain(line, word);
            }
            words.push_back(std::move(word));
        }
        if (!words.empty()) {
            DescriptionLine result{number, std::move(words.front()), {}};
            words.erase(words.begin());
            result.arguments = std::move(words);
            return result;
        }
    }
    return std::nullopt;
}

} // namespace shell
