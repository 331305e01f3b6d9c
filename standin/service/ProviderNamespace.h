// The namespace that a provider calls back into for the definitions of its classes.
#pragma once

#include "Common/src/com/ComPtr.h"

#include <string>
#include <wbemcli.h>

namespace standin
{
class CRepository;

// Answers GetObject for classes and nothing else. It holds on to nothing but the repository, which outlives
// it: a provider's hold on it does not keep the service up.
ComPtr<IWbemServices> MakeProviderNamespace(const CRepository& repository, const std::wstring& nameSpace);
} // namespace standin
