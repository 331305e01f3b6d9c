// Settings that the user keeps under names, to run with. They are a file of the user's, not the provider's.
#pragma once

#include "tools/zebdiag/Model.h"

#include <map>
#include <string>

namespace zebdiag
{
// By name, in the order of the names; names are told apart without regard to case.
struct CProfileOrder
{
    bool operator()(const std::wstring& a, const std::wstring& b) const noexcept;
};
using Profiles = std::map<std::wstring, CSettingValues, CProfileOrder>;

// "profiles.json" in the user's application data; empty if the system does not tell where that is.
std::wstring ProfileFile();

// What the file keeps; nothing if there is none. Throws CFailure for one that cannot be read or understood.
Profiles LoadProfiles(const std::wstring& file);
// Replaces the file in one step, and makes its folder if need be. Throws CFailure.
void StoreProfiles(const std::wstring& file, const Profiles& profiles);

// The settings of one profile. Throws CFailure (NotFound), which names those that there are.
const CSettingValues& ProfileNamed(const Profiles& profiles, const std::wstring& name);
} // namespace zebdiag
