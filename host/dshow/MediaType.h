// A media type that owns its format block.
#pragma once

#include "platform/dshow_api.h"

#include <span>

namespace dshow {

// Copies deeply; equality compares types and format bytes. The two API helpers below work on the plain
// record, whose format block is task memory.
class DMB_HOST_API MediaType {
public:
    MediaType();
    MediaType(REFGUID major, REFGUID sub, REFGUID formatId = FORMAT_None, std::span<const BYTE> format = {});
    explicit MediaType(const AM_MEDIA_TYPE& type);
    MediaType(const MediaType& other);
    MediaType(MediaType&& other) noexcept;
    MediaType& operator=(MediaType other) noexcept;
    ~MediaType();

    [[nodiscard]] const AM_MEDIA_TYPE& Get() const { return type_; }
    [[nodiscard]] std::span<const BYTE> Format() const { return {type_.pbFormat, type_.cbFormat}; }
    // A type with a null major or sub type says "any".
    [[nodiscard]] bool IsComplete() const;
    friend DMB_HOST_API bool operator==(const MediaType& a, const MediaType& b);

private:
    AM_MEDIA_TYPE type_;
};

// Fills an uninitialised record with a deep copy; E_OUTOFMEMORY leaves it empty.
[[nodiscard]] DMB_HOST_API HRESULT CopyMediaType(AM_MEDIA_TYPE& to, const AM_MEDIA_TYPE& from);
// Frees what the record owns and empties it.
DMB_HOST_API void ClearMediaType(AM_MEDIA_TYPE& type);

} // namespace dshow
