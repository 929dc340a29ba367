#include "host/headend/Description.h"

#include "host/wire/LabelText.h"

namespace headend {

wire::ByteVector EncodeText(const std::string& utf8, TextCoding coding) {
    switch (coding) {
    case TextCoding::kEbuLatin: {
        wire::ByteVector out;
        if (!wire::EncodeEbuLatin(utf8, out))
            throw DescriptionError("\"" + utf8 + "\" has characters that EBU Latin lacks");
        return out;
    }
    case TextCoding::kKorean: {
        const std::string page = wire::ToCodePage949(utf8);
        wire::ByteVector out(page.begin(), page.end());
        // Receivers tell Korean bytes from others by their strict pairs; what is no such pair would be read otherwise.
        if (wire::FromCodePage949(page) != utf8 || !(wire::IsStrictKorean(out) || utf8.size() == page.size()))
            throw DescriptionError("\"" + utf8 + "\" has characters that KS X 1001 lacks");
        return out;
    }
    case TextCoding::kUcs2:
        return wire::EncodeUcs2(utf8);
    case TextCoding::kUtf8:
        break;
    }
    return {utf8.begin(), utf8.end()};
}

int CharsetOf(TextCoding coding) {
    switch (coding) {
    case TextCoding::kUcs2:
        return wire::kCharsetUcs2;
    case TextCoding::kUtf8:
        return wire::kCharsetUtf8;
    case TextCoding::kEbuLatin:
    case TextCoding::kKorean:
        break;
    }
    return wire::kCharsetEbuLatin;
}

} // namespace headend
