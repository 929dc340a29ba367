// Enumerators over a fixed list or over a list with a version.
#pragma once

#include "host/dshow/ComObject.h"
#include "host/dshow/ComPtr.h"
#include "platform/dshow_api.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace dshow {

// `Source` is copied with the enumerator and says what is enumerated:
//   bool InStep()                    false: the list has changed since Reset
//   void Restart()                   take up the list as it is now
//   ULONG Count()
//   HRESULT Give(ULONG index, Item*) store one counted or allocated item
template <class Interface, class Item, class Source> class Enumerator final : public ComObject<Interface> {
public:
    Enumerator(REFIID iid, Source source, ULONG position = 0)
        : iid_(iid), source_(std::move(source)), position_(position) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (!(iid == IID_IUnknown) && !(iid == iid_))
            return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        this->AddRef();
        return S_OK;
    }

    STDMETHODIMP Next(ULONG wanted, Item* items, ULONG* fetched) override {
        if (items == nullptr)
            return E_POINTER;
        if (fetched == nullptr && wanted != 1)
            return E_INVALIDARG;
        if (fetched != nullptr)
            *fetched = 0;
        if (!source_.InStep())
            return VFW_E_ENUM_OUT_OF_SYNC;
        ULONG given = 0;
        while (given < wanted && position_ < source_.Count()) {
            const HRESULT result = source_.Give(position_, &items[given]);
            if (FAILED(result))
                return result;
            ++given;
            ++position_;
        }
        if (fetched != nullptr)
            *fetched = given;
        return given == wanted ? S_OK : S_FALSE;
    }

    STDMETHODIMP Skip(ULONG count) override {
        if (!source_.InStep())
            return VFW_E_ENUM_OUT_OF_SYNC;
        const ULONG left = source_.Count() - std::min(position_, source_.Count());
        position_ += std::min(count, left);
        return count <= left ? S_OK : S_FALSE;
    }

    STDMETHODIMP Reset() override {
        source_.Restart();
        position_ = 0;
        return S_OK;
    }

    STDMETHODIMP Clone(Interface** copy) override {
        if (copy == nullptr)
            return E_POINTER;
        *copy = new Enumerator(iid_, source_, position_);
        return S_OK;
    }

private:
    const IID iid_;
    Source source_;
    ULONG position_;
};

} // namespace dshow
