#include "VxCamera/surface/KnownDescriptions.h"

namespace {

// Made when the module is loaded, before anybody can ask, and ended when it is unloaded: by then its last
// object, and with it every thread of ours and every user of a description, is gone. It starts nothing and
// waits for nothing, neither then nor when the process ends.
genapi::DescriptionCache descriptions;

} // namespace

genapi::DescriptionCache& KnownDescriptions()
{
    return descriptions;
}
