// The class that clients' locators create in the service process, and its factory.
#pragma once

#include "Common/src/com/ComObject.h"

namespace standin
{
class CService;

// `service` outlives the class object and everything made by it.
ComPtr<IClassFactory> MakeServiceFactory(CService& service);
} // namespace standin
