// Connecting to the management service of a computer, as the user or as somebody else.
#pragma once

#include "tools/zebdiag/WmiSession.h"

#include <string>

namespace zebdiag
{
// Sets the process's defaults for calls to other computers. Once, before the first connection.
void InitializeClientSecurity() noexcept;

// Connects through the registered locator. The password is used only where the target names a user. Throws
// CFailure.
CWmiSession Connect(const CTarget& target, const std::wstring& password);

// The same through a given locator.
CWmiSession ConnectThrough(IWbemLocator* locator, const CTarget& target, const std::wstring& password);
} // namespace zebdiag
