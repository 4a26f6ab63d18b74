#pragma once

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

/// COM on a test's thread, for one scope.
class ComApartment final {
public:
    explicit ComApartment(DWORD model = COINIT_MULTITHREADED)
    {
        EXPECT_HRESULT_SUCCEEDED(::CoInitializeEx(nullptr, model));
    }
    ~ComApartment() { ::CoUninitialize(); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};
