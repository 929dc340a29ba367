#include "host/dshow/MediaType.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace dshow {

MediaType::MediaType() : type_{} {}

MediaType::MediaType(REFGUID major, REFGUID sub, REFGUID formatId, std::span<const BYTE> format) : type_{} {
    AM_MEDIA_TYPE plain{};
    plain.majortype = major;
    plain.subtype = sub;
    plain.formattype = formatId;
    plain.cbFormat = static_cast<ULONG>(format.size());
    plain.pbFormat = const_cast<BYTE*>(format.data());
    (void)CopyMediaType(type_, plain);
}

MediaType::MediaType(const AM_MEDIA_TYPE& type) : type_{} {
    (void)CopyMediaType(type_, type);
}

MediaType::MediaType(const MediaType& other) : MediaType(other.type_) {}

MediaType::MediaType(MediaType&& other) noexcept : type_(std::exchange(other.type_, AM_MEDIA_TYPE{})) {}

MediaType& MediaType::operator=(MediaType other) noexcept {
    std::swap(type_, other.type_);
    return *this;
}

MediaType::~MediaType() {
    ClearMediaType(type_);
}

bool MediaType::IsComplete() const {
    return !(type_.majortype == GUID_NULL) && !(type_.subtype == GUID_NULL);
}

bool operator==(const MediaType& a, const MediaType& b) {
    return a.type_.majortype == b.type_.majortype && a.type_.subtype == b.type_.subtype &&
           a.type_.formattype == b.type_.formattype && std::ranges::equal(a.Format(), b.Format());
}

HRESULT CopyMediaType(AM_MEDIA_TYPE& to, const AM_MEDIA_TYPE& from) {
    to = from;
    to.cbFormat = 0;
    to.pbFormat = nullptr;
    if (from.cbFormat != 0 && from.pbFormat != nullptr) {
        to.pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(from.cbFormat));
        if (to.pbFormat == nullptr) {
            to = AM_MEDIA_TYPE{};
            return E_OUTOFMEMORY;
        }
        std::memcpy(to.pbFormat, from.pbFormat, from.cbFormat);
        to.cbFormat = from.cbFormat;
    }
    if (to.pUnk != nullptr)
        to.pUnk->AddRef();
    return S_OK;
}

void ClearMediaType(AM_MEDIA_TYPE& type) {
    CoTaskMemFree(type.pbFormat);
    if (type.pUnk != nullptr)
        type.pUnk->Release();
    type = AM_MEDIA_TYPE{};
}

} // namespace dshow
