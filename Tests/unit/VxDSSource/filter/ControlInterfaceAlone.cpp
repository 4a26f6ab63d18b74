// The control interface as a client in C++ sees it: nothing but this header. That it compiles is the test.
#include "VxDSSource/filter/IVxDSSource.h"

#include <type_traits>

static_assert(std::is_abstract_v<IVxDSSource>);
static_assert(std::is_base_of_v<IUnknown, IVxDSSource>);
static_assert(!std::is_base_of_v<IDispatch, IVxDSSource>);
