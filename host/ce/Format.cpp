// The formatter of platform/wince.h. Built on every target: it uses nothing but that header.
#include "platform/wince.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace {

// Bounds for what a format text may ask for; no text of ours comes near.
constexpr int kWidest = 1024;
constexpr int kFinest = 99;

// One "%..." of a format text.
struct Conversion {
    bool left = false, plus = false, blank = false, zero = false, alternative = false;
    int width = 0;
    int precision = -1; // -1: none given
    WCHAR size = 0;     // 'h', 'l' or none
    WCHAR letter = 0;   // 0: the format text ended
};

int TakeNumber(const WCHAR*& at, int bound) {
    int number = 0;
    for (; *at >= '0' && *at <= '9'; ++at)
        number = std::min(number * 10 + (*at - '0'), bound);
    return number;
}

// Reads a conversion; `at` stands behind the percent sign and is left behind the letter.
Conversion TakeConversion(const WCHAR*& at) {
    Conversion conversion;
    for (;; ++at) {
        if (*at == '-')
            conversion.left = true;
        else if (*at == '+')
            conversion.plus = true;
        else if (*at == ' ')
            conversion.blank = true;
        else if (*at == '0')
            conversion.zero = true;
        else if (*at == '#')
            conversion.alternative = true;
        else
            break;
    }
    conversion.width = TakeNumber(at, kWidest);
    if (*at == '.') {
        ++at;
        conversion.precision = TakeNumber(at, kWidest);
    }
    while (*at == 'h' || *at == 'l')
        conversion.size = *at++;
    conversion.letter = *at;
    if (*at != 0)
        ++at;
    return conversion;
}

WString Widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

WString WideOfNarrow(const char* narrow) {
    const int room = MultiByteToWideChar(kNarrowCodePage, 0, narrow, -1, nullptr, 0);
    WString wide(static_cast<std::size_t>(std::max(room, 1)), WCHAR{0});
    if (room > 0)
        MultiByteToWideChar(kNarrowCodePage, 0, narrow, -1, wide.data(), room);
    wide.pop_back(); // the terminator
    return wide;
}

// Puts the sign and the padding around a number's digits.
void AppendNumber(WString& out, const Conversion& conversion, const WString& prefix, const WString& digits,
                  bool zeros) {
    const std::size_t size = prefix.size() + digits.size();
    const auto width = static_cast<std::size_t>(conversion.width);
    const WString padding(width > size ? width - size : 0, zeros ? WCHAR{'0'} : WCHAR{' '});
    if (conversion.left)
        out += prefix + digits + WString(padding.size(), WCHAR{' '});
    else if (zeros)
        out += prefix + padding + digits;
    else
        out += padding + prefix + digits;
}

WString SignOf(bool negative, const Conversion& conversion) {
    if (negative)
        return WTEXT("-");
    return conversion.plus ? WTEXT("+") : conversion.blank ? WTEXT(" ") : WTEXT("");
}

void AppendWhole(WString& out, const Conversion& conversion, const FormatArgument& argument) {
    ULONG number = argument.kind() == FormatArgument::Kind::Number ? argument.number() : 0;
    if (conversion.size == 'h')
        number &= 0xFFFF;
    WString prefix;
    int base = 10;
    if (conversion.letter == 'd' || conversion.letter == 'i') {
        const LONG value = conversion.size == 'h' ? static_cast<LONG>(static_cast<SHORT>(number)) //
                                                  : static_cast<LONG>(number);
        prefix = SignOf(value < 0, conversion);
        number = value < 0 ? 0 - static_cast<ULONG>(value) : static_cast<ULONG>(value);
    } else if (conversion.letter != 'u') {
        base = 16;
        if (conversion.alternative && number != 0)
            prefix = {WCHAR{'0'}, conversion.letter};
    }
    std::array<char, 16> room{};
    const char* end = std::to_chars(room.data(), room.data() + room.size(), number, base).ptr;
    WString digits = Widen({room.data(), end});
    if (conversion.letter == 'X')
        for (WCHAR& digit : digits)
            digit = digit >= 'a' ? static_cast<WCHAR>(digit - 'a' + 'A') : digit;
    const auto least = static_cast<std::size_t>(std::max(conversion.precision, 0));
    if (digits.size() < least)
        digits.insert(0, least - digits.size(), WCHAR{'0'});
    AppendNumber(out, conversion, prefix, digits, conversion.zero && conversion.precision < 0);
}

void AppendReal(WString& out, const Conversion& conversion, const FormatArgument& argument) {
    double value = argument.kind() == FormatArgument::Kind::Real     ? argument.real()
                   : argument.kind() == FormatArgument::Kind::Number ? static_cast<LONG>(argument.number())
                                                                     : 0.0;
    std::array<char, 512> room{}; // 309 digits, point, at most 99 decimals
    const int precision = conversion.precision < 0 ? 6 : std::min(conversion.precision, kFinest);
    const char* end =
        std::to_chars(room.data(), room.data() + room.size(), value, std::chars_format::fixed, precision).ptr;
    std::string_view digits(room.data(), static_cast<std::size_t>(end - room.data()));
    const bool negative = digits.starts_with('-');
    if (negative)
        digits.remove_prefix(1);
    const bool isNumber = digits[0] >= '0' && digits[0] <= '9'; // not "inf" or "nan"
    AppendNumber(out, conversion, SignOf(negative, conversion), Widen(digits), conversion.zero && isNumber);
}

void AppendText(WString& out, const Conversion& conversion, WString text) {
    if (conversion.precision >= 0)
        text.resize(std::min(text.size(), static_cast<std::size_t>(conversion.precision)));
    AppendNumber(out, conversion, {}, text, conversion.zero);
}

WString TextOf(const FormatArgument& argument) {
    if (argument.kind() == FormatArgument::Kind::Wide && argument.wide() != nullptr)
        return argument.wide();
    if (argument.kind() == FormatArgument::Kind::Narrow && argument.narrow() != nullptr)
        return WideOfNarrow(argument.narrow());
    return WTEXT("(null)");
}

} // namespace

WString FormatArguments(const WCHAR* format, const FormatArgument* arguments, std::size_t count) {
    static const FormatArgument missing;
    WString out;
    std::size_t next = 0;
    const auto take = [&]() -> const FormatArgument& { return next < count ? arguments[next++] : missing; };
    for (const WCHAR* at = format; *at != 0;) {
        if (*at != '%') {
            out += *at++;
            continue;
        }
        ++at;
        const Conversion conversion = TakeConversion(at);
        switch (conversion.letter) {
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
            AppendWhole(out, conversion, take());
            break;
        case 'f':
            AppendReal(out, conversion, take());
            break;
        case 's':
        case 'S': // the argument itself knows whether it is wide
            AppendText(out, conversion, TextOf(take()));
            break;
        case 'c':
        case 'C':
            AppendText(out, conversion, WString(1, static_cast<WCHAR>(take().number())));
            break;
        case 0:
            break;
        default:
            out += conversion.letter;
        }
    }
    return out;
}
