#include "tools/zebdiag/Profiles.h"

#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"
#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/WholeFile.h"
#include "tools/zebdiag/languages/Said.h"

#include <nlohmann/json.hpp>

namespace zebdiag
{
namespace
{
using ProfileDocument = nlohmann::ordered_json;

constexpr int kProfileVersion = 1;
constexpr DWORD kLargestFile = 1024 * 1024;

struct CSwitchRow
{
    const char* Name;
    std::optional<bool> CSettingValues::*Member;
};
constexpr CSwitchRow kSwitches[] = {{"quick", &CSettingValues::Quick}, {"report", &CSettingValues::Report}};

CFailure Unusable(const std::wstring& file)
{
    return CFailure(ExitCode::CouldNotRun, Said(L"The profiles in {1} cannot be understood.", {file}),
                    Said(L"Correct the file, or delete it and keep the profiles anew."));
}

std::string ReadBytes(const std::wstring& file)
{
    const CFileHandle opened(CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                         nullptr, OPEN_EXISTING, 0, nullptr));
    const DWORD error = opened ? ERROR_SUCCESS : GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
        return {};
    std::string bytes(kLargestFile, '\0');
    DWORD size = 0;
    if (!opened || !ReadFile(opened.Get(), bytes.data(), kLargestFile, &size, nullptr))
        throw CFailure(ExitCode::CouldNotRun, Said(L"The profiles in {1} cannot be read.", {file}),
                       Said(L"See whether you may read that file."),
                       HRESULT_FROM_WIN32(opened ? GetLastError() : error));
    bytes.resize(size);
    return bytes;
}

// Throws what the library throws for a value of another type.
CSettingValues ValuesOf(const ProfileDocument& profile)
{
    CSettingValues values;
    if (profile.contains("coverage"))
        values.Coverage = profile.at("coverage").get<long>();
    if (values.Coverage && (*values.Coverage < 1 || *values.Coverage > 100))
        throw std::out_of_range("coverage");
    for (const CSwitchRow& row : kSwitches)
        if (profile.contains(row.Name))
            values.*row.Member = profile.at(row.Name).get<bool>();
    return values;
}

ProfileDocument DocumentOf(const Profiles& profiles)
{
    ProfileDocument document = {{"version", kProfileVersion}, {"profiles", ProfileDocument::object()}};
    for (const auto& [name, values] : profiles)
    {
        ProfileDocument& profile = document["profiles"][Utf8Text(name)] = ProfileDocument::object();
        if (values.Coverage)
            profile["coverage"] = *values.Coverage;
        for (const CSwitchRow& row : kSwitches)
            if (values.*row.Member)
                profile[row.Name] = *(values.*row.Member);
    }
    return document;
}

// The file's folder and the one above it, which is the maker's.
void MakeFolders(const std::wstring& file)
{
    const std::wstring folder = file.substr(0, file.rfind(L'\\'));
    CreateDirectoryW(folder.substr(0, folder.rfind(L'\\')).c_str(), nullptr);
    CreateDirectoryW(folder.c_str(), nullptr);
}
} // namespace

bool CProfileOrder::operator()(const std::wstring& a, const std::wstring& b) const noexcept
{
    return CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE) == CSTR_LESS_THAN;
}

std::wstring ProfileFile()
{
    wchar_t folder[MAX_PATH] = {};
    const DWORD size = GetEnvironmentVariableW(L"APPDATA", folder, MAX_PATH);
    return size == 0 || size >= MAX_PATH ? L"" : folder + std::wstring(L"\\Veltrane\\ZEB\\profiles.json");
}

Profiles LoadProfiles(const std::wstring& file)
{
    Profiles profiles;
    const std::string bytes = ReadBytes(file);
    if (bytes.empty())
        return profiles;
    try
    {
        const ProfileDocument document = ProfileDocument::parse(bytes);
        if (document.at("version").get<int>() != kProfileVersion)
            throw Unusable(file);
        for (const auto& [name, profile] : document.at("profiles").items())
            profiles[WidenUtf8(name)] = ValuesOf(profile);
    }
    catch (const CFailure&)
    {
        throw;
    }
    catch (const std::exception&)
    {
        throw Unusable(file);
    }
    return profiles;
}

void StoreProfiles(const std::wstring& file, const Profiles& profiles)
{
    MakeFolders(file);
    try
    {
        WriteWholeFile(file, DocumentOf(profiles).dump(2) + "\n");
    }
    catch (CFailure& failure)
    {
        // The user has not chosen the file and cannot choose another one.
        failure.NextStep = Said(L"See whether you may change that file and whether the disk is full.");
        throw;
    }
}

const CSettingValues& ProfileNamed(const Profiles& profiles, const std::wstring& name)
{
    const auto found = profiles.find(name);
    if (found != profiles.end())
        return found->second;
    std::wstring cause = Said(L"There is no profile \"{1}\".", {name});
    if (!profiles.empty())
        cause += L" " + Said(L"There is:");
    for (const auto& [other, values] : profiles)
        cause += L"\n  " + other;
    throw CFailure(ExitCode::NotFound, cause,
                   Said(L"Keep one with \"zebdiag profiles --save NAME\" and the settings to run with."));
}
} // namespace zebdiag
