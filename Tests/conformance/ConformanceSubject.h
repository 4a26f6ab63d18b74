#pragma once

#include <windows.h>

#include <ostream>
#include <string>
#include <vector>

/// A filter that is held to the DirectShow contract: where it is, and what it claims to have. What it does
/// not claim it must refuse.
struct ConformanceSubject {
    /// A class that the module registers.
    struct Class {
        CLSID clsid;
        std::wstring name;
    };

    std::wstring dll;           // path from the test program's folder
    CLSID clsid;                // the filter's
    std::wstring name;          // under which devices are listed
    std::wstring pinName;       // of its first pin, an output
    std::vector<Class> classes; // every page that is there is among them

    bool hasPages;        // ISpecifyPropertyPages on the filter
    bool isPersistent;    // IPersistStream on the filter
    bool hasStreamConfig; // IAMStreamConfig on the pin
    bool hasCategory;     // IKsPropertySet on the pin, with the category "capture"
    HRESULT ofCutStream;  // result of loading a stream that ends behind the version word, but early
};

/// How GoogleTest names a subject.
inline void PrintTo(const ConformanceSubject& subject, std::ostream* out)
{
    for (const wchar_t unit : subject.dll)
        out->put(static_cast<char>(unit)); // file names here are ASCII
}
