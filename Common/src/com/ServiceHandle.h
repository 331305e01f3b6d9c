// The owner of a handle to a system service or to the service control manager.
#pragma once

#include "Common/src/com/Owned.h"

struct ServiceHandleTraits
{
    using Type = SC_HANDLE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type h) noexcept { CloseServiceHandle(h); }
};
using CServiceHandle = COwned<ServiceHandleTraits>;
