#pragma once

#include "BaseClasses/CAutoLock.h"
#include "BaseClasses/CBaseFilter.h"
#include "BaseClasses/CBasePin.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A class identifier that belongs to nobody.
inline constexpr CLSID kTestClass = {
    0x6F1D6A54, 0x9B0E, 0x4B55, {0x8E, 0x61, 0x0D, 0x3C, 0x52, 0x7A, 0x91, 0x20}};

/// A media type with a short format block, different for each number.
inline CMediaType TypeNumber(int number)
{
    const GUID major = {0x1000, 0, 0, {}};
    CMediaType type(&major);
    const GUID sub = {static_cast<unsigned long>(number), 1, 0, {}};
    type.SetSubtype(&sub);
    const GUID format = {0x2000, 0, 0, {}};
    type.SetFormatType(&format);
    BYTE block[] = {1, 2, 3, static_cast<BYTE>(number)};
    type.SetFormat(block, sizeof(block));
    return type;
}

class TestFilter;

/// A pin of CBasePin itself whose every step the test can make fail.
class TestPin final : public CBasePin {
public:
    explicit TestPin(CBaseFilter* filter, CCritSec* lock, PIN_DIRECTION direction = PINDIR_OUTPUT,
                     LPCWSTR name = L"Pin")
        : CBasePin(NAME("pin"), filter, lock, nullptr, name, direction)
    {
    }

    // What the steps do.
    std::function<HRESULT(const CMediaType&)> onCheck = [](const CMediaType&) { return S_OK; };
    std::function<HRESULT()> onComplete = [] { return S_OK; };
    std::function<HRESULT()> onBreak = [] { return S_OK; };
    std::function<HRESULT()> onActive = [] { return S_OK; };
    std::function<HRESULT()> onRun = [] { return S_OK; };
    std::function<HRESULT()> onInactive = [] { return S_OK; };
    std::vector<CMediaType> types;

    // What happened.
    int breaks = 0;
    REFERENCE_TIME runStart = -1;
    int mediaTypeCalls = 0;

    const CMediaType& Type() const { return m_mt; }
    void TryOwnTypesFirst() { m_bTryMyTypesFirst = true; }
    bool HasRunTimeError() const { return m_bRunTimeError; }
    void SetRunTimeError() { m_bRunTimeError = true; }
    CBaseFilter* Filter() const { return m_pFilter; }

    HRESULT CheckMediaType(const CMediaType* type) override { return onCheck(*type); }
    HRESULT CompleteConnect(IPin* peer) override
    {
        const HRESULT hr = CBasePin::CompleteConnect(peer);
        return FAILED(hr) ? hr : onComplete();
    }
    HRESULT BreakConnect() override
    {
        ++breaks;
        return onBreak();
    }
    HRESULT GetMediaType(int position, CMediaType* type) override
    {
        ++mediaTypeCalls;
        if (position < 0)
            return E_INVALIDARG;
        if (static_cast<std::size_t>(position) >= types.size())
            return 0x00040103; // VFW_S_NO_MORE_ITEMS
        return type->Set(types[static_cast<std::size_t>(position)]);
    }
    HRESULT Active() override { return onActive(); }
    HRESULT Run(REFERENCE_TIME start) override
    {
        runStart = start;
        return onRun();
    }
    HRESULT Inactive() override
    {
        const HRESULT hr = CBasePin::Inactive();
        return FAILED(hr) ? hr : onInactive();
    }
    STDMETHODIMP BeginFlush() override { return S_OK; }
    STDMETHODIMP EndFlush() override { return S_OK; }
};

/// A filter of CBaseFilter itself. Created on the heap; a test holds it by an interface.
class TestFilter : public CBaseFilter {
public:
    explicit TestFilter(LPUNKNOWN outer = nullptr) : CBaseFilter(NAME("filter"), outer, &m_lock, kTestClass)
    {
    }

    TestPin& AddTestPin(PIN_DIRECTION direction = PINDIR_OUTPUT, LPCWSTR name = L"Pin")
    {
        m_pins.push_back(std::make_unique<TestPin>(this, &m_lock, direction, name));
        pins.push_back(m_pins.back().get());
        return *m_pins.back();
    }
    void SetState(FILTER_STATE state) { m_State = state; }
    CCritSec& Lock() { return m_lock; }
    WCHAR* StoredName() const { return m_pName; }

    std::vector<CBasePin*> pins; // as GetPin gives them; null entries are possible
    LPAMOVIESETUP_FILTER setup = nullptr;

    int GetPinCount() override { return static_cast<int>(pins.size()); }
    CBasePin* GetPin(int n) override { return pins[static_cast<std::size_t>(n)]; }
    LPAMOVIESETUP_FILTER GetSetupData() override { return setup; }

private:
    CCritSec m_lock;
    std::vector<std::unique_ptr<TestPin>> m_pins;
};
