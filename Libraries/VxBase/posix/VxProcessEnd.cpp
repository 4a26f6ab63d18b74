#include "VxBase/VxProcessEnd.h"

/// There, no thread is ended before a process has run its last destructor.
bool VxProcessEnd::IsSystemEndingProcess()
{
    return false;
}
