#include "dataservice/LabelText.h"

WString DecodeUcs2Label(std::span<const BYTE> bytes) {
    WString text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto character = static_cast<WCHAR>((bytes[i] << 8) | bytes[i + 1]);
        if (character == 0)
            break;
        text.push_back(character);
    }
    return text;
}

bool AppendLabel(std::vector<WString>& history, const WString& text) {
    if (text.empty() || (!history.empty() && history.back() == text))
        return false;
    if (history.size() >= kLabelHistory)
        history.erase(history.begin());
    history.push_back(text);
    return true;
}
