// The provider behind the classes of StandinTest.mof. What it does with an instance is told by the key.
#pragma once

#include "standin/proxy/UnsupportedServices.h"

#include <string>
#include <wbemprov.h>

// `broken` says at initialisation that it failed.
ComPtr<IWbemProviderInit> MakeTestProvider(bool broken);

// Ends the process when the last provider has been released.
void WaitForLastProvider();
