#pragma once

// Everything at once, for source written against the platform's own base classes. Code of this project
// includes the header of each class that it uses instead.

#include <windows.h>

#include <dshow.h>
#include <dvdmedia.h>
#include <olectl.h>
#include <tchar.h>

#include <cstdio>
#include <cstdlib>

#include "BaseClasses/BitmapSizes.h"
#include "BaseClasses/CAMEvent.h"
#include "BaseClasses/CAMThread.h"
#include "BaseClasses/CAutoLock.h"
#include "BaseClasses/CBaseFilter.h"
#include "BaseClasses/CBaseObject.h"
#include "BaseClasses/CBaseOutputPin.h"
#include "BaseClasses/CBasePin.h"
#include "BaseClasses/CBasePropertyPage.h"
#include "BaseClasses/CClassFactory.h"
#include "BaseClasses/CCritSec.h"
#include "BaseClasses/CEnumMediaTypes.h"
#include "BaseClasses/CEnumPins.h"
#include "BaseClasses/CFactoryTemplate.h"
#include "BaseClasses/CMediaType.h"
#include "BaseClasses/CPersistStream.h"
#include "BaseClasses/CRefTime.h"
#include "BaseClasses/CSource.h"
#include "BaseClasses/CSourceStream.h"
#include "BaseClasses/CUnknown.h"
#include "BaseClasses/DebugMacros.h"
#include "BaseClasses/FOURCCMap.h"
#include "BaseClasses/MediaTypeMemory.h"
#include "BaseClasses/MemoryAllocator.h"
#include "BaseClasses/ModuleEntryPoints.h"
#include "BaseClasses/ModuleGlobals.h"
#include "BaseClasses/ModuleRegistration.h"
#include "BaseClasses/MovieSetup.h"
#include "BaseClasses/StreamIntegers.h"
#include "BaseClasses/WideStrings.h"
