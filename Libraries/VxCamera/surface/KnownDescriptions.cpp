#include "VxCamera/surface/KnownDescriptions.h"

namespace {

// Made at compile time, so that it is there before anybody can ask. Its end needs no lock and knows no other
// object: a module is unloaded when its last object, and with it the last user of a description, is gone.
constinit genapi::DescriptionCache descriptions;

} // namespace

genapi::DescriptionCache& KnownDescriptions()
{
    return descriptions;
}
