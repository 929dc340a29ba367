#include "host/dshow/ClassTable.h"

#include "host/ce/Clock.h"
#include "host/dshow/ComObject.h"
#include "host/dshow/ComPtr.h"
#include "platform/dshow_api.h"

#include <cstring>
#include <new>

#include <gtest/gtest.h>

namespace dshow {
namespace {

constexpr CLSID kClass = {0x12345678, 0x9ABC, 0x4DEF, {1, 2, 3, 4, 5, 6, 7, 8}};

class Thing final : public ComObject<IUnknown> {
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown ? this : nullptr;
        if (*object == nullptr)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
};

HRESULT Create(REFIID iid, ComPtr<IUnknown>& thing) {
    return CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, iid, thing.OutVoid());
}

TEST(ClassTable, WithoutATableNothingIsCreated) {
    void* object = &object;
    EXPECT_EQ(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, nullptr), E_POINTER);
}

TEST(ClassTable, MakesWhatWasAddedAndForgetsWhatWasRemoved) {
    ce::ManualClock clock;
    ClassTable table(clock);
    const LONG before = LiveObjects();
    ComPtr<IUnknown> thing;
    EXPECT_EQ(Create(IID_IUnknown, thing), REGDB_E_CLASSNOTREG);
    table.Add(kClass, [](REFIID iid, void** object) { return CreateObject<Thing>(iid, object); });
    EXPECT_EQ(Create(IID_IUnknown, thing), 0);
    EXPECT_EQ(LiveObjects(), before + 1);
    EXPECT_EQ(thing->AddRef(), 2u);
    EXPECT_EQ(thing->Release(), 1u);
    EXPECT_EQ(Create(IID_IPin, thing), E_NOINTERFACE);
    EXPECT_FALSE(thing);
    EXPECT_EQ(LiveObjects(), before);
    table.Remove(kClass);
    EXPECT_EQ(Create(IID_IUnknown, thing), REGDB_E_CLASSNOTREG);
}

TEST(ClassTable, AClassAddedAgainReplacesTheOneBefore) {
    ce::ManualClock clock;
    ClassTable table(clock);
    table.Add(kClass, [](REFIID iid, void** object) { return CreateObject<Thing>(iid, object); });
    table.Add(kClass, [](REFIID, void**) -> HRESULT { return E_UNEXPECTED; });
    ComPtr<IUnknown> thing;
    EXPECT_EQ(Create(IID_IUnknown, thing), E_UNEXPECTED);
}

TEST(ClassTable, AFactoryWithoutMemoryIsACode) {
    ce::ManualClock clock;
    ClassTable table(clock);
    table.Add(kClass, [](REFIID, void**) -> HRESULT { throw std::bad_alloc(); });
    ComPtr<IUnknown> thing;
    EXPECT_EQ(Create(IID_IUnknown, thing), E_OUTOFMEMORY);
}

TEST(ClassTable, ATableIsCurrentForItsLifetime) {
    ce::ManualClock clock;
    EXPECT_EQ(ClassTable::Current(), nullptr);
    {
        ClassTable outer(clock);
        {
            ClassTable inner(clock);
            EXPECT_EQ(ClassTable::Current(), &inner);
        }
        EXPECT_EQ(ClassTable::Current(), &outer);
    }
    EXPECT_EQ(ClassTable::Current(), nullptr);
}

TEST(CountedTexts, HaveTheirLengthInBytesBeforeThem) {
    BSTR text = SysAllocString(WTEXT("\uBC29\uC1A1!"));
    DWORD bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<BYTE*>(text) - 4, 4);
    EXPECT_EQ(bytes, 6u);
    EXPECT_EQ(WString(text), WTEXT("\uBC29\uC1A1!"));
    SysFreeString(text);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    SysFreeString(nullptr);
    CoTaskMemFree(nullptr);
    void* nothing = CoTaskMemAlloc(0);
    EXPECT_NE(nothing, nullptr);
    CoTaskMemFree(nothing);
}

} // namespace
} // namespace dshow
