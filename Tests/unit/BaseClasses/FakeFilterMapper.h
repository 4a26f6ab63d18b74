#pragma once

#include "BaseClasses/IVxFilterMapperFactory.h"
#include "BaseClasses/VxComPtr.h"
#include "support/directshow/TestObject.h"

#include <functional>
#include <string>
#include <vector>

/// What registration asked of a mapper, in order; a class is named by its first field.
using MapperCalls = std::vector<std::string>;

inline std::string MapperCall(const char* what, REFCLSID clsid)
{
    std::string call(what);
    return call.append(1, ' ').append(std::to_string(clsid.Data1));
}

/// The newer mapper: answers as told and records its calls.
class FakeFilterMapper2 final : public TestObject<IFilterMapper2> {
public:
    explicit FakeFilterMapper2(MapperCalls& calls) : m_calls(calls) {}

    std::function<HRESULT(REFCLSID)> onRegister = [](REFCLSID) { return S_OK; };
    std::function<HRESULT(REFCLSID)> onUnregister = [](REFCLSID) { return S_OK; };

    // Of the last registration.
    std::wstring name;
    REGFILTER2 description = {};
    bool isPlain = false; // no moniker wanted, the general category, no instance name

    STDMETHODIMP RegisterFilter(REFCLSID clsid, LPCWSTR filterName, IMoniker** moniker, const CLSID* category,
                                LPCOLESTR instance, const REGFILTER2* filter) override
    {
        m_calls.push_back(MapperCall("register", clsid));
        name = filterName;
        description = *filter;
        isPlain = moniker == nullptr && category == nullptr && instance == nullptr;
        return onRegister(clsid);
    }
    STDMETHODIMP UnregisterFilter(const CLSID* category, LPCOLESTR instance, REFCLSID clsid) override
    {
        EXPECT_EQ(category, nullptr);
        EXPECT_EQ(instance, nullptr);
        m_calls.push_back(MapperCall("unregister", clsid));
        return onUnregister(clsid);
    }
    STDMETHODIMP CreateCategory(REFCLSID, DWORD, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP EnumMatchingFilters(IEnumMoniker**, DWORD, BOOL, DWORD, BOOL, DWORD, const GUID*,
                                     const REGPINMEDIUM*, const CLSID*, BOOL, BOOL, DWORD, const GUID*,
                                     const REGPINMEDIUM*, const CLSID*) override
    {
        return E_NOTIMPL;
    }

private:
    MapperCalls& m_calls;
};

/// The older mapper.
class FakeFilterMapper final : public TestObject<IFilterMapper> {
public:
    explicit FakeFilterMapper(MapperCalls& calls) : m_calls(calls) {}

    STDMETHODIMP RegisterFilter(CLSID clsid, LPCWSTR, DWORD) override
    {
        m_calls.push_back(MapperCall("old register", clsid));
        return S_OK;
    }
    STDMETHODIMP RegisterPin(CLSID clsid, LPCWSTR, BOOL, BOOL, BOOL, BOOL, CLSID, LPCWSTR) override
    {
        m_calls.push_back(MapperCall("old pin", clsid));
        return S_OK;
    }
    STDMETHODIMP RegisterPinType(CLSID clsid, LPCWSTR, CLSID, CLSID) override
    {
        m_calls.push_back(MapperCall("old type", clsid));
        return S_OK;
    }
    STDMETHODIMP UnregisterFilter(CLSID clsid) override
    {
        m_calls.push_back(MapperCall("old unregister", clsid));
        return S_OK;
    }
    STDMETHODIMP RegisterFilterInstance(CLSID, LPCWSTR, CLSID*) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterFilterInstance(CLSID) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterPin(CLSID, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP EnumMatchingFilters(IEnumRegFilters**, DWORD, BOOL, CLSID, CLSID, BOOL, BOOL, CLSID,
                                     CLSID) override
    {
        return E_NOTIMPL;
    }

private:
    MapperCalls& m_calls;
};

/// Gives out the mappers of a test.
class FakeMapperFactory final : public IVxFilterMapperFactory {
public:
    MapperCalls calls;
    FakeFilterMapper2 mapper2{calls};
    FakeFilterMapper mapper{calls};
    HRESULT creating2 = S_OK;
    HRESULT creating = S_OK;

    HRESULT CreateMapper2(IFilterMapper2** result) override
    {
        *result = SUCCEEDED(creating2) ? VxComPtr<IFilterMapper2>(&mapper2).Detach() : nullptr;
        return creating2;
    }
    HRESULT CreateMapper(IFilterMapper** result) override
    {
        *result = SUCCEEDED(creating) ? VxComPtr<IFilterMapper>(&mapper).Detach() : nullptr;
        return creating;
    }
};
