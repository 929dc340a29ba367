#include "host/wire/LabelText.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <optional>

namespace wire {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// TS 101 756 annex C, complete EBU Latin based repertoire. 0 marks what is no printable character.
constexpr std::array<char16_t, 256> MakeEbuLatin() {
    std::array<char16_t, 256> table{};
    for (unsigned i = 0x20; i < 0x7B; ++i)
        table[i] = static_cast<char16_t>(i);
    table[0x24] = 0x0142;
    table[0x5C] = 0x016E;
    table[0x5E] = 0x0141;
    table[0x60] = 0x0104;
    constexpr char16_t kLow[0x20] = {
        0x0000, 0x0118, 0x012E, 0x0172, 0x0102, 0x0116, 0x010E, 0x0218, 0x021A, 0x010A, 0x0000,
        0x0000, 0x0120, 0x0139, 0x017B, 0x0143, 0x0105, 0x0119, 0x012F, 0x0173, 0x0103, 0x0117,
        0x010F, 0x0219, 0x021B, 0x010B, 0x0147, 0x011A, 0x0121, 0x013A, 0x017C, 0x0000,
    };
    constexpr char16_t kHigh[0x85] = {
        0x00AB, 0x016F, 0x00BB, 0x013D, 0x0126, // 0x7B
        0x00E1, 0x00E0, 0x00E9, 0x00E8, 0x00ED, 0x00EC, 0x00F3, 0x00F2,
        0x00FA, 0x00F9, 0x00D1, 0x00C7, 0x015E, 0x00DF, 0x00A1, 0x0178, // 0x80
        0x00E2, 0x00E4, 0x00EA, 0x00EB, 0x00EE, 0x00EF, 0x00F4, 0x00F6,
        0x00FB, 0x00FC, 0x00F1, 0x00E7, 0x015F, 0x011F, 0x0131, 0x00FF, // 0x90
        0x0136, 0x0145, 0x00A9, 0x0122, 0x011E, 0x011B, 0x0148, 0x0151,
        0x0150, 0x20AC, 0x00A3, 0x0024, 0x0100, 0x0112, 0x012A, 0x016A, // 0xA0
        0x0137, 0x0146, 0x013B, 0x0123, 0x013C, 0x0130, 0x0144, 0x0171,
        0x0170, 0x00BF, 0x013E, 0x00B0, 0x0101, 0x0113, 0x012B, 0x016B, // 0xB0
        0x00C1, 0x00C0, 0x00C9, 0x00C8, 0x00CD, 0x00CC, 0x00D3, 0x00D2,
        0x00DA, 0x00D9, 0x0158, 0x010C, 0x0160, 0x017D, 0x00D0, 0x013F, // 0xC0
        0x00C2, 0x00C4, 0x00CA, 0x00CB, 0x00CE, 0x00CF, 0x00D4, 0x00D6,
        0x00DB, 0x00DC, 0x0159, 0x010D, 0x0161, 0x017E, 0x0111, 0x0140, // 0xD0
        0x00C3, 0x00C5, 0x00C6, 0x0152, 0x0177, 0x00DD, 0x00D5, 0x00D8,
        0x00DE, 0x014A, 0x0154, 0x0106, 0x015A, 0x0179, 0x0164, 0x00F0, // 0xE0
        0x00E3, 0x00E5, 0x00E6, 0x0153, 0x0175, 0x00FD, 0x00F5, 0x00F8,
        0x00FE, 0x014B, 0x0155, 0x0107, 0x015B, 0x017A, 0x0165, 0x0127, // 0xF0
    };
    for (unsigned i = 0; i < 0x20; ++i)
        table[i] = kLow[i];
    for (unsigned i = 0; i < 0x85; ++i)
        table[0x7B + i] = kHigh[i];
    return table;
}

constexpr std::array<char16_t, 256> kEbuLatin = MakeEbuLatin();

void AppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

// Takes one character off the front; a malformed byte counts as one replacement character.
char32_t TakeUtf8(ByteSpan& text) {
    const std::uint8_t lead = text[0];
    const std::size_t length = lead < 0x80         ? 1
                               : (lead >> 5) == 6  ? 2
                               : (lead >> 4) == 14 ? 3
                               : (lead >> 3) == 30 ? 4
                                                   : 0;
    if (length == 1) {
        text = text.subspan(1);
        return lead;
    }
    char32_t c = length == 2 ? lead & 0x1F : length == 3 ? lead & 0x0F : lead & 0x07;
    bool good = length != 0 && text.size() >= length;
    for (std::size_t i = 1; good && i < length; ++i) {
        good = (text[i] & 0xC0) == 0x80;
        c = (c << 6) | (text[i] & 0x3F);
    }
    constexpr char32_t kSmallest[5] = {0, 0, 0x80, 0x800, 0x10000};
    if (!good || c < kSmallest[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) {
        text = text.subspan(1);
        return kReplacement;
    }
    text = text.subspan(length);
    return c;
}

ByteSpan AsBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string DecodeUcs2(ByteSpan text) {
    std::string out;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        char32_t c = Get16(text, i);
        if (c >= 0xD800 && c < 0xDC00 && i + 3 < text.size()) {
            const char32_t low = Get16(text, i + 2);
            if (low >= 0xDC00 && low < 0xE000) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        AppendUtf8(out, c >= 0xD800 && c < 0xE000 ? kReplacement : c);
    }
    return out;
}

// One conversion of the C library; nothing when any character cannot be converted.
std::optional<std::string> Convert(const char* to, const char* from, std::string_view in) {
    const iconv_t converter = iconv_open(to, from);
    if (converter == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    std::string source(in);
    std::string out(in.size() * 3 + 8, '\0');
    char* sourceAt = source.data();
    char* outAt = out.data();
    std::size_t sourceLeft = source.size();
    std::size_t outLeft = out.size();
    const std::size_t result = iconv(converter, &sourceAt, &sourceLeft, &outAt, &outLeft);
    iconv_close(converter);
    if (result == static_cast<std::size_t>(-1) || sourceLeft != 0)
        return std::nullopt;
    out.resize(out.size() - outLeft);
    return out;
}

struct BaseLetter {
    std::u32string_view accented;
    char plain;
};

// The accented letters of the EBU repertoire that code page 949 lacks.
constexpr BaseLetter kBaseLetters[] = {
    {U"ÀÁÂÃÄÅĀĂĄ", 'A'}, {U"àáâãäåāăą", 'a'}, {U"ÇĆČĊ", 'C'},     {U"çćčċ", 'c'},   {U"Ď", 'D'},
    {U"ď", 'd'},         {U"ÈÉÊËĒĖĘĚ", 'E'},  {U"èéêëēėęě", 'e'}, {U"ĞĠĢ", 'G'},    {U"ğġģ", 'g'},
    {U"ÌÍÎÏĪĮİ", 'I'},   {U"ìíîïīį", 'i'},    {U"Ķ", 'K'},        {U"ķ", 'k'},      {U"ĹĻĽ", 'L'},
    {U"ĺļľ", 'l'},       {U"ÑŃŅŇ", 'N'},      {U"ñńņň", 'n'},     {U"ÒÓÔÕÖŐ", 'O'}, {U"òóôõöő", 'o'},
    {U"ŔŘ", 'R'},        {U"ŕř", 'r'},        {U"ŚŞŠȘ", 'S'},     {U"śşšș", 's'},   {U"ŤȚ", 'T'},
    {U"ťț", 't'},        {U"ÙÚÛÜŪŮŰŲ", 'U'},  {U"ùúûüūůűų", 'u'}, {U"Ŵ", 'W'},      {U"ŵ", 'w'},
    {U"ÝŶŸ", 'Y'},       {U"ýŷÿ", 'y'},       {U"ŹŻŽ", 'Z'},      {U"źżž", 'z'},
};

char BaseLetterOf(char32_t c) {
    for (const BaseLetter& entry : kBaseLetters)
        if (entry.accented.find(c) != std::u32string_view::npos)
            return entry.plain;
    return '?';
}

// Labels end after so many bytes, wherever in a character that is. What is left of one there is no text.
ByteSpan WithoutCutCharacter(ByteSpan text, int charset) {
    if (charset == kCharsetUtf8) {
        std::size_t tail = 0; // continuation bytes at the end
        while (tail < 3 && tail < text.size() && (text[text.size() - 1 - tail] & 0xC0) == 0x80)
            ++tail;
        if (tail == text.size())
            return text;
        const std::uint8_t lead = text[text.size() - 1 - tail];
        const std::size_t wanted = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        return tail < wanted ? text.first(text.size() - 1 - tail) : text;
    }
    const bool mayBeKorean = charset != kCharsetUcs2 && charset != kCharsetLatin1 && charset != kCharsetLatin2;
    // Two pairs before it, or it is as likely a Latin letter.
    constexpr std::size_t kSurePairBytes = 4;
    if (mayBeKorean && text.size() > kSurePairBytes && text.back() >= 0xA1 && !IsStrictKorean(text)) {
        const ByteSpan rest = text.first(text.size() - 1);
        const auto high = std::count_if(rest.begin(), rest.end(), [](std::uint8_t byte) { return byte >= 0x80; });
        if (static_cast<std::size_t>(high) >= kSurePairBytes && IsStrictKorean(rest))
            return rest;
    }
    return text;
}

} // namespace

bool IsStrictKorean(ByteSpan text) {
    bool any = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0x80)
            continue;
        if (text[i] < 0xA1 || text[i] == 0xFF || i + 1 >= text.size() || text[i + 1] < 0xA1 || text[i + 1] == 0xFF)
            return false;
        any = true;
        ++i;
    }
    return any && Convert("UTF-8", "EUC-KR", {reinterpret_cast<const char*>(text.data()), text.size()}).has_value();
}

std::string DecodeText(ByteSpan text, int charset) {
    std::string out;
    if (charset == kCharsetUcs2)
        return DecodeUcs2(text);
    if (charset == kCharsetLatin2)
        return Convert("UTF-8", "ISO-8859-2", {reinterpret_cast<const char*>(text.data()), text.size()}).value_or("");
    if (charset == kCharsetUtf8) {
        while (!text.empty())
            AppendUtf8(out, TakeUtf8(text));
        return out;
    }
    if (charset == kCharsetLatin1) {
        for (const std::uint8_t byte : text)
            AppendUtf8(out, byte);
        return out;
    }
    if (IsStrictKorean(text))
        return FromCodePage949({reinterpret_cast<const char*>(text.data()), text.size()});
    for (const std::uint8_t byte : text)
        AppendUtf8(out, byte == 0 ? U'\0' : kEbuLatin[byte] == 0 ? U' ' : kEbuLatin[byte]);
    return out;
}

std::string DecodeLabel(ByteSpan text, int charset) {
    std::string out = DecodeText(WithoutCutCharacter(text, charset), charset);
    while (!out.empty() && (out.back() == ' ' || out.back() == '\0'))
        out.pop_back();
    // A zero inside would end the label for everybody who reads it as a C string.
    for (char& c : out)
        if (c == '\0')
            c = ' ';
    return out;
}

ByteVector RemoveControlCodes(ByteSpan text, int charset) {
    const auto isControl = [](std::uint32_t c) { return c == 0x00 || c == 0x0A || c == 0x0B || c == 0x1F; };
    ByteVector out;
    if (charset == kCharsetUcs2) {
        for (std::size_t i = 0; i + 1 < text.size(); i += 2)
            if (!isControl(Get16(text, i)))
                AppendBytes(out, text.subspan(i, 2));
        return out;
    }
    for (const std::uint8_t byte : text)
        if (!isControl(byte))
            out.push_back(byte);
    return out;
}

std::string ToCodePage949(std::string_view utf8) {
    if (auto whole = Convert("CP949", "UTF-8", utf8))
        return *whole;
    std::string out;
    ByteSpan rest = AsBytes(utf8);
    while (!rest.empty()) {
        const char32_t c = TakeUtf8(rest);
        std::string one;
        AppendUtf8(one, c);
        if (auto converted = Convert("CP949", "UTF-8", one))
            out += *converted;
        else
            out.push_back(BaseLetterOf(c));
    }
    return out;
}

std::string FromCodePage949(std::string_view bytes) {
    if (auto whole = Convert("UTF-8", "CP949", bytes))
        return *whole;
    std::string out;
    for (std::size_t i = 0; i < bytes.size();) {
        const bool pair = static_cast<std::uint8_t>(bytes[i]) >= 0x80 && i + 1 < bytes.size();
        if (auto converted = Convert("UTF-8", "CP949", bytes.substr(i, pair ? 2 : 1))) {
            out += *converted;
            i += pair ? 2 : 1;
        } else {
            AppendUtf8(out, kReplacement);
            ++i;
        }
    }
    return out;
}

std::string_view CutCodePage949(std::string_view bytes, std::size_t limit) {
    std::size_t length = 0;
    while (length < bytes.size()) {
        const std::uint8_t lead = static_cast<std::uint8_t>(bytes[length]);
        const std::size_t step = lead >= 0x81 && lead <= 0xFE ? 2 : 1;
        if (length + step > limit || length + step > bytes.size())
            break;
        length += step;
    }
    return bytes.substr(0, length);
}

std::string LabelToCodePage949(ByteSpan text, int charset) {
    return ToCodePage949(DecodeLabel(text, charset));
}

bool EncodeEbuLatin(std::string_view utf8, ByteVector& out) {
    ByteSpan rest = AsBytes(utf8);
    while (!rest.empty()) {
        const char32_t c = TakeUtf8(rest);
        std::size_t code = 0;
        while (code < kEbuLatin.size() && (kEbuLatin[code] == 0 || kEbuLatin[code] != c))
            ++code;
        if (code == kEbuLatin.size())
            return false;
        out.push_back(static_cast<std::uint8_t>(code));
    }
    return true;
}

ByteVector EncodeUcs2(std::string_view utf8) {
    ByteVector out;
    ByteSpan rest = AsBytes(utf8);
    while (!rest.empty()) {
        char32_t c = TakeUtf8(rest);
        if (c >= 0x10000) {
            c -= 0x10000;
            Append16(out, 0xD800 + (c >> 10));
            c = 0xDC00 + (c & 0x3FF);
        }
        Append16(out, c);
    }
    return out;
}

} // namespace wire
