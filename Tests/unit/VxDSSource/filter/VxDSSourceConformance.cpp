#include "VxDSSource/filter/Identifiers.h"
#include "conformance/FilterConformanceTest.h"

// The module's filter, held to the same contract as any other.
VX_CONFORMANCE_OF(VxDSSource, ConformanceSubject{
                                  L"..\\bin\\VxDSSource.dll",
                                  CLSID_VxDSSource,
                                  kFilterName,
                                  L"Output",
                                  {{CLSID_VxDSSource, kFilterName},
                                   {CLSID_ParametersPage, L"Vexa DirectShow Source Parameters"},
                                   {CLSID_BrowserPage, L"Vexa DirectShow Source Browser"},
                                   {CLSID_AboutPage, L"Vexa DirectShow Source About"}},
                                  true,
                                  true,
                                  true,
                                  true,
                                  S_OK, // keeps its settings, and the rest of the graph loads
                              });
