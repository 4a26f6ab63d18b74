#include "conformance/FilterConformanceTest.h"
#include "conformance/ToySource/ToyIdentifiers.h"

#include <vfwmsgs.h>

// A filter made with the base classes and nothing else.
VX_CONFORMANCE_OF(ToySource, ConformanceSubject{
                                 L"ToySource.dll",
                                 CLSID_ToySource,
                                 L"Toy source",
                                 L"Toy output",
                                 {{CLSID_ToySource, L"Toy source"}, {CLSID_ToyPage, L"Toy page"}},
                                 true,
                                 true,
                                 true,
                                 true,
                                 VFW_E_INVALID_FILE_FORMAT,
                             });
