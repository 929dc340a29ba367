#include "host/ce/Text.h"

#include <iconv.h>

#include <array>
#include <cerrno>

namespace ce {

namespace {

// One conversion of the C library, UTF-16 always in the machine's own byte order.
class Converter {
public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Converter() {
        if (IsOpen())
            iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Converts as much as it can, appends it to `out` and takes it from `in`. What stays in `in` is not
    // convertible.
    void Convert(std::string_view& in, std::string& out) {
        char* from = const_cast<char*>(in.data()); // the interface of iconv is older than const
        std::size_t left = IsOpen() ? in.size() : 0;
        const std::size_t given = left;
        while (left != 0) {
            std::array<char, 256> room; // NOLINT: filled below
            char* to = room.data();
            std::size_t free = room.size();
            const std::size_t result = iconv(handle_, &from, &left, &to, &free);
            const int error = errno;
            out.append(room.data(), room.size() - free);
            if (result == static_cast<std::size_t>(-1) && error != E2BIG)
                break;
        }
        in.remove_prefix(given - left);
        if (IsOpen())
            iconv(handle_, nullptr, nullptr, nullptr, nullptr); // forget a half-read character
    }

private:
    [[nodiscard]] bool IsOpen() const {
        return handle_ != reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr): POSIX says so
    }

    iconv_t handle_;
};

bool IsHighSurrogate(WCHAR unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(WCHAR unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(std::string& out, char32_t character) {
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        out += static_cast<char>(character);
    } else if (character < 0x800) {
        out += static_cast<char>(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        out += static_cast<char>(0xE0 | character >> 12);
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0 | character >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

// Takes one character from the front of `wide`; half a pair gives U+FFFD.
char32_t TakeCharacter(WStringView& wide) {
    const WCHAR first = wide[0];
    const bool pair = IsHighSurrogate(first) && wide.size() > 1 && IsLowSurrogate(wide[1]);
    char32_t character = first;
    if (pair)
        character = 0x10000 + ((static_cast<char32_t>(first) - 0xD800) << 10) + (wide[1] - 0xDC00);
    else if (IsHighSurrogate(first) || IsLowSurrogate(first))
        character = kReplacement;
    wide.remove_prefix(pair ? 2 : 1);
    return character;
}

// The bytes that `utf8` begins with as one character; 0 when they are none (Unicode 15, table 3-7).
std::size_t TakeUtf8(std::string_view utf8, char32_t& character) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
    const unsigned char lead = byte(0);
    const std::size_t size = lead < 0x80 ? 1 : lead >> 5 == 6 ? 2 : lead >> 4 == 14 ? 3 : lead >> 3 == 30 ? 4 : 0;
    if (size == 0 || size > utf8.size())
        return 0;
    character = size == 1 ? lead : lead & (0x7Fu >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if (byte(i) >> 6 != 2)
            return 0;
        character = character << 6 | (byte(i) & 0x3Fu);
    }
    static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    return character < kSmallest[size] || surrogate || character > 0x10FFFF ? 0 : size;
}

} // namespace

WString NarrowToWide(std::string_view narrow) {
    Converter toWide("UTF-16LE", "CP949");
    std::string bytes;
    while (!narrow.empty()) {
        toWide.Convert(narrow, bytes);
        if (!narrow.empty()) {
            bytes += {static_cast<char>(kReplacement & 0xFF), static_cast<char>(kReplacement >> 8)};
            narrow.remove_prefix(1);
        }
    }
    WString wide;
    wide.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        wide +=
            static_cast<WCHAR>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8);
    return wide;
}

std::string WideToNarrow(WStringView wide) {
    Converter toNarrow("CP949", "UTF-8");
    std::string narrow;
    const std::string utf8 = ToUtf8(wide);
    std::string_view rest = utf8;
    while (!rest.empty()) {
        toNarrow.Convert(rest, narrow);
        if (!rest.empty()) {
            narrow += '?';
            rest.remove_prefix(1); // the lead byte, and then its tail
            while (!rest.empty() && static_cast<unsigned char>(rest[0]) >> 6 == 2)
                rest.remove_prefix(1);
        }
    }
    return narrow;
}

std::string ToUtf8(WStringView wide) {
    std::string utf8;
    utf8.reserve(wide.size());
    while (!wide.empty())
        AppendUtf8(utf8, TakeCharacter(wide));
    return utf8;
}

WString FromUtf8(std::string_view utf8) {
    WString wide;
    wide.reserve(utf8.size());
    while (!utf8.empty()) {
        char32_t character = kReplacement;
        const std::size_t size = TakeUtf8(utf8, character);
        if (size == 0)
            character = kReplacement;
        if (character >= 0x10000) {
            wide += static_cast<WCHAR>(0xD800 + ((character - 0x10000) >> 10));
            wide += static_cast<WCHAR>(0xDC00 + (character & 0x3FF));
        } else {
            wide += static_cast<WCHAR>(character);
        }
        utf8.remove_prefix(size == 0 ? 1 : size);
    }
    return wide;
}

bool IsWellFormed(WStringView wide) {
    while (!wide.empty()) {
        const WCHAR first = wide[0];
        if (TakeCharacter(wide) == kReplacement && first != kReplacement)
            return false;
    }
    return true;
}

} // namespace ce
