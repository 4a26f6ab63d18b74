#include "VxCamera/surface/KnownDescriptions.h"

#include "VxBase/VxProcessEnd.h"

namespace {

/// Made when the module is loaded, before anybody can ask. When it is unloaded, its last object, and with it
/// every thread of ours and every user of a description, is gone. When the process ends, a thread may have
/// been ended in the middle of using them: then they stay as they are. They start nothing and wait for
/// nothing.
///
/// Owner:  the module.
/// Thread: see genapi::DescriptionCache.
union Storage {
    Storage() : descriptions() {}
    ~Storage()
    {
        if (!VxProcessEnd::HasBegun())
            descriptions.~DescriptionCache();
    }
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;

    genapi::DescriptionCache descriptions;
};

Storage storage;

} // namespace

genapi::DescriptionCache& KnownDescriptions()
{
    return storage.descriptions;
}
