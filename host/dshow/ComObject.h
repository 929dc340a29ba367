// The counting base of every object here.
#pragma once

#include "platform/com.h"

#include <atomic>

namespace dshow {

// How many counted objects of this process are alive, whichever library made them. A test that begins and
// ends with the same number has leaked nothing.
DMB_HOST_API LONG LiveObjects();
DMB_HOST_API void CountLiveObject(LONG change);

// Implements AddRef and Release for a class of one or several interfaces. An object is born with one
// reference, which belongs to whoever created it. Objects are made with new and end with the last Release.
template <class... Interfaces> class ComObject : public Interfaces... {
public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    STDMETHODIMP_(ULONG) AddRef() override { return references_.fetch_add(1) + 1; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = references_.fetch_sub(1) - 1;
        if (left == 0) {
            // What the destructor calls may take and give back a reference for a moment; that must not end it twice.
            references_ = kEnding;
            delete this;
        }
        return left;
    }

protected:
    ComObject() { CountLiveObject(1); }
    virtual ~ComObject() { CountLiveObject(-1); }

private:
    static constexpr ULONG kEnding = 0x40000000;
    std::atomic<ULONG> references_{1};
};

// Implements the three identity methods of an interface whose object is counted by another part of it. `Base`
// names the class that counts.
#define DSHOW_UNKNOWN_OF(Base)                                                                                         \
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {                                                  \
        return Base::QueryInterface(iid, object);                                                                      \
    }                                                                                                                  \
    STDMETHODIMP_(ULONG) AddRef() override {                                                                           \
        return Base::AddRef();                                                                                         \
    }                                                                                                                  \
    STDMETHODIMP_(ULONG) Release() override {                                                                          \
        return Base::Release();                                                                                        \
    }

// One interface of an object that has many: it lends identity and count from its owner.
template <class Interface> class Face : public Interface {
public:
    explicit Face(IUnknown& owner) : owner_(owner) {}
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override { return owner_.QueryInterface(iid, object); }
    STDMETHODIMP_(ULONG) AddRef() override { return owner_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return owner_.Release(); }

protected:
    ~Face() = default;

private:
    IUnknown& owner_;
};

// Nobody calls by name here; `Base` is an interface that derives from IDispatch.
template <class Base> class NoDispatch : public Base {
public:
    using Base::Base;
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (count == nullptr)
            return E_POINTER;
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
};

} // namespace dshow
