// Which process delivered the instances: the provider runs in one of its own, which people who look into a
// problem want to find.
#pragma once

#include "tools/zebdiag/WmiSession.h"

#include <string>
#include <vector>

namespace zebdiag
{
inline constexpr wchar_t kProviderImage[] = L"Drevok.EXE";

// The ids of the provider's processes on the target: as its management service lists processes, or, where
// that does not and the target is this computer, as the system does. Empty where neither tells.
std::vector<unsigned long> FindServingProcesses(const CWmiSession& session);

std::vector<unsigned long> ServingProcessesOfService(const CWmiSession& session);
// The processes of this computer with that image name, without regard to case.
std::vector<unsigned long> ProcessesOfImage(const std::wstring& image);
} // namespace zebdiag
