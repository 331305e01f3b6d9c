// The registry values of a computer, some of which may refuse.
#pragma once

#include "tools/zebdiag/SenderValues.h"

#include <map>
#include <string>

namespace zebdiag
{
inline CRegistryValue NumberValue(DWORD number)
{
    const auto* bytes = reinterpret_cast<const BYTE*>(&number);
    return {REG_DWORD, std::vector<BYTE>(bytes, bytes + sizeof number)};
}

inline CRegistryValue TextValue(const std::wstring& text)
{
    const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {REG_SZ, std::vector<BYTE>(bytes, bytes + (text.size() + 1) * sizeof(wchar_t))};
}

class CFakeRegistry final : public IRegistryValues
{
  public:
    std::map<std::wstring, CRegistryValue> Values;
    unsigned Calls = 0;
    unsigned FailingCall = 0; // which one answers Status; 0: none
    LSTATUS Status = ERROR_ACCESS_DENIED;

    LSTATUS Read(const wchar_t* name, std::optional<CRegistryValue>& value) override
    {
        if (++Calls == FailingCall)
            return Status;
        const auto found = Values.find(name);
        value = found == Values.end() ? std::nullopt : std::optional(found->second);
        return ERROR_SUCCESS;
    }
    LSTATUS Write(const wchar_t* name, const std::optional<CRegistryValue>& value) override
    {
        if (++Calls == FailingCall)
            return Status;
        if (value)
            Values[name] = *value;
        else if (Values.erase(name) == 0)
            return ERROR_FILE_NOT_FOUND;
        return ERROR_SUCCESS;
    }
};
} // namespace zebdiag
