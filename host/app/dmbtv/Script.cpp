#include "host/app/dmbtv/Script.h"

#include <charconv>
#include <optional>
#include <sstream>

namespace dmbtv {

namespace {

struct Words {
    std::vector<std::string> words;
    bool good = true; // every quote is closed
};

Words Split(const std::string& line) {
    Words result;
    std::size_t at = 0;
    while (at < line.size()) {
        if (line[at] == ' ' || line[at] == '\t') {
            ++at;
            continue;
        }
        std::string word;
        if (line[at] == '"') {
            ++at;
            while (at < line.size() && line[at] != '"') {
                if (line[at] == '\\' && at + 1 < line.size())
                    ++at;
                word += line[at++];
            }
            result.good = result.good && at < line.size();
            ++at;
        } else {
            while (at < line.size() && line[at] != ' ' && line[at] != '\t')
                word += line[at++];
        }
        result.words.push_back(std::move(word));
    }
    return result;
}

std::optional<int> Number(const std::string& word) {
    int value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size() || value < -1)
        return std::nullopt;
    return value;
}

struct Form {
    const char* words; // what the line begins with
    Verb verb;
    const char* arguments; // n number, t text, o ok or cancel
};
constexpr Form kForms[] = {
    {"wait", Verb::Wait, "n"},
    {"press", Verb::Press, "n"},
    {"key", Verb::Key, "n"},
    {"click", Verb::Click, "nn"},
    {"answer", Verb::Answer, "no"},
    {"pick", Verb::Pick, "nn"},
    {"shot", Verb::Shot, "t"},
    {"dialog", Verb::Dialog, "nnt"},
    {"expect mode", Verb::ExpectMode, "n"},
    {"expect type", Verb::ExpectType, "n"},
    {"expect text", Verb::ExpectText, "nt"},
    {"expect title", Verb::ExpectTitle, "t"},
    {"expect box", Verb::ExpectBox, "n"},
    {"quit", Verb::Quit, ""},
};

// The reason why the arguments do not fit, or nothing.
std::string ReadArguments(const Form& form, const std::vector<std::string>& words, std::size_t at, ScriptLine& line) {
    const std::string wanted = form.arguments;
    if (words.size() - at != wanted.size())
        return std::string("'") + form.words + "' takes " + std::to_string(wanted.size()) + " argument(s)";
    int numbers = 0;
    for (const char kind : wanted) {
        const std::string& word = words[at++];
        if (kind == 't') {
            line.text = word;
        } else if (kind == 'o') {
            if (word != "ok" && word != "cancel")
                return "expected ok or cancel, got '" + word + "'";
            line.second = word == "ok" ? 1 : 0;
        } else {
            const std::optional<int> number = Number(word);
            if (!number)
                return "expected a number, got '" + word + "'";
            (numbers++ == 0 ? line.first : line.second) = *number;
        }
    }
    return {};
}

// What stands behind the #.
std::string RemarkOf(const std::string& line) {
    const std::size_t begin = line.find_first_not_of("# \t");
    return begin == std::string::npos ? std::string() : line.substr(begin);
}

} // namespace

Script ReadScript(const std::string& content) {
    Script script;
    std::istringstream in(content);
    int number = 0;
    for (std::string text; std::getline(in, text);) {
        ++number;
        if (!text.empty() && text.back() == '\r')
            text.pop_back();
        const Words split = Split(text);
        if (split.words.empty())
            continue;
        if (split.words[0].front() == '#') {
            script.lines.push_back({Verb::Remark, 0, 0, RemarkOf(text), number, text});
            continue;
        }
        const auto refuse = [&](const std::string& reason) {
            script.error = "line " + std::to_string(number) + ": " + reason;
            return script;
        };
        if (!split.good)
            return refuse("a quote is not closed");
        const bool expects = split.words[0] == "expect" && split.words.size() > 1;
        const std::string begin = expects ? "expect " + split.words[1] : split.words[0];
        const Form* form = nullptr;
        for (const Form& candidate : kForms) {
            if (begin == candidate.words)
                form = &candidate;
        }
        if (form == nullptr)
            return refuse("unknown line '" + begin + "'");
        ScriptLine line{form->verb, 0, 0, {}, number, text};
        if (const std::string reason = ReadArguments(*form, split.words, expects ? 2 : 1, line); !reason.empty())
            return refuse(reason);
        script.lines.push_back(std::move(line));
    }
    return script;
}

} // namespace dmbtv
