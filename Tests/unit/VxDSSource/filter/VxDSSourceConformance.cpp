#include "VxDSSource/filter/Identifiers.h"
#include "conformance/FilterConformanceTest.h"

// The module's filter, held to the same contract as any other.
VX_CONFORMANCE_OF(VxDSSource, ConformanceSubject{
                                  L"..\\bin\\VxDSSource.dll",
                                  CLSID_VxDSSource,
                                  kFilterName,
                                  L"Output",
                                  {{CLSID_VxDSSource, kFilterName}},
                                  true, // names its three pages; none of them is a class of the module yet
                                  true,
                                  true,
                                  true,
                              });
