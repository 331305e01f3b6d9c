// What clients' locators find in the service process.
#pragma once

#include "Common/src/com/ComObject.h"
#include "standin/proxy/WmiStandin.h"

namespace standin
{
class CService;

// `service` outlives the object and everything made by it.
ComPtr<IWmiStandin> MakeConnectServer(CService& service);
} // namespace standin
