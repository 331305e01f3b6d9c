// A computer with a good installation, which a test breaks.
#pragma once

#include "tools/zebdiag/doctor/Machine.h"

#include <map>
#include <set>

namespace zebdiag
{
inline constexpr wchar_t kFakeFolder[] = L"C:\\Program Files\\ZEB\\";
inline constexpr wchar_t kFakeData[] = L"C:\\ProgramData\\ZEB\\";

class CFakeMachine final : public IMachine
{
  public:
    CFakeMachine();

    static std::wstring Place(const std::wstring& key, const wchar_t* name) { return key + L"|" + name; }
    // In the program's folder.
    std::wstring& VersionIn(const wchar_t* file) { return Files[std::wstring(kFakeFolder) + file]; }

    // By Place.
    std::map<std::wstring, std::wstring> Texts;
    std::map<std::wstring, DWORD> Numbers;
    std::map<std::wstring, std::vector<BYTE>> Binaries;
    std::map<std::wstring, std::wstring> Files; // path to version; folders without their last backslash
    std::set<std::wstring> Hidden;              // may not be looked at
    std::set<std::wstring> Accounts;
    std::map<std::wstring, Right> Writers; // by account; Yes for the others
    std::vector<CInterface> All;
    std::map<std::wstring, std::wstring> Strings; // by Place of library and number
    CAgentAnswer AgentSaid;

    std::optional<std::wstring> Text(const std::wstring& key, const wchar_t* name) const override
    {
        return Find(Texts, Place(key, name));
    }
    std::optional<DWORD> Number(const std::wstring& key, const wchar_t* name) const override
    {
        return Find(Numbers, Place(key, name));
    }
    std::optional<std::vector<BYTE>> Bytes(const std::wstring& key, const wchar_t* name) const override
    {
        return Find(Binaries, Place(key, name));
    }
    FileState Look(const std::wstring& path) const override
    {
        return Hidden.contains(path)  ? FileState::NotTold
               : Files.contains(path) ? FileState::There
                                      : FileState::Missing;
    }
    std::wstring VersionOf(const std::wstring& path) const override
    {
        return Find(Files, path).value_or(L"");
    }
    Right Exists(const std::wstring& account) const override
    {
        return Accounts.contains(account) ? Right::Yes : Right::No;
    }
    Right MayWrite(const std::wstring&, const std::wstring& account) const override
    {
        return Find(Writers, account).value_or(Right::Yes);
    }
    std::vector<CInterface> Interfaces() const override { return All; }
    std::wstring StringIn(const std::wstring& library, UINT id) const override
    {
        return Find(Strings, Place(library, std::to_wstring(id).c_str())).value_or(L"");
    }
    CAgentAnswer Agent() const override { return AgentSaid; }

  private:
    template <class Value>
    static std::optional<Value> Find(const std::map<std::wstring, Value>& values, const std::wstring& place)
    {
        const auto found = values.find(place);
        return found == values.end() ? std::nullopt : std::optional<Value>(found->second);
    }
};
} // namespace zebdiag
