#pragma once

#include <windows.h>

/// Name of an object for debug builds of the platform's own base classes; here always null, but typed, so
/// that the call stays unambiguous beside the 8-bit constructors.
#ifndef NAME
#define NAME(text) (static_cast<LPCTSTR>(nullptr))
#endif

#ifndef UNICODE
#error "The base classes are built with the wide API: define UNICODE and _UNICODE."
#endif

/// Counts the live objects of the module; DllCanUnloadNow asks for the number.
///
/// Owner:  the derived object.
/// Thread: any; the count is interlocked.
class CBaseObject {
public:
    /// @param objectName  not kept: it means something in debug builds of the platform's own base classes
    /// only
    explicit CBaseObject(LPCTSTR objectName);
    explicit CBaseObject(LPCSTR objectName);
    ~CBaseObject();
    CBaseObject(const CBaseObject&) = delete;
    CBaseObject& operator=(const CBaseObject&) = delete;

    /// @return  objects alive in this module
    static LONG ObjectsActive();
};
