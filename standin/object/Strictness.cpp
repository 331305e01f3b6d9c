#include "standin/object/Strictness.h"

#include <windows.h>

namespace standin
{
bool IsStrict() noexcept
{
    DWORD strict = 0;
    DWORD size = sizeof strict;
    return RegGetValueW(HKEY_LOCAL_MACHINE, kSettingsKey, L"Strict", RRF_RT_REG_DWORD, nullptr, &strict,
                        &size) == ERROR_SUCCESS &&
           strict != 0;
}
} // namespace standin
