#pragma once

#include "BaseClasses/CUnknown.h"
#include "BaseClasses/MovieSetup.h"

/// Creates an object.
/// @param outer  aggregating object, or null
/// @param phr    set to the failure, if any; an object that is returned with a failure is deleted by the
/// factory
using LPFNNewCOMObject = CUnknown*(CALLBACK*)(LPUNKNOWN outer, HRESULT* phr);

/// Told when the module is loaded and unloaded.
using LPFNInitRoutine = void(CALLBACK*)(BOOL loading, const CLSID* clsid);

/// One row of the table of classes that a module offers.
///
/// Owner:  the module, as static data.
/// Thread: any; only read.
class CFactoryTemplate {
public:
    const WCHAR* m_Name;
    const CLSID* m_ClsID;
    LPFNNewCOMObject m_lpfnNew;
    LPFNInitRoutine m_lpfnInit = nullptr;
    const AMOVIESETUP_FILTER* m_pAMovieSetup_Filter = nullptr; // null: registered as a class, not as a filter

    BOOL IsClassID(REFCLSID clsid) const;
    /// @return  the new object, no reference taken; null when phr is null
    CUnknown* CreateInstance(LPUNKNOWN outer, HRESULT* phr) const;
};

/// The module's table.
extern CFactoryTemplate g_Templates[];
extern int g_cTemplates;
