// Keeps activation from locking up the process.
//
// When the last stub of an interface goes, Wine waits for the calls on that interface to end, and holds a
// lock meanwhile that a call needs to hand out an object. Activation makes such calls, on interfaces of which
// the process has a stub only now and then.
#pragma once

#include "Common/src/com/ComPtr.h"

#include <objidl.h>

namespace standin
{
// Keeps one stub of each such interface until the process ends: there is no way back.
HRESULT HoldActivationInterfaces(IClassFactory* factory);
} // namespace standin
