// The files of the installation and what it writes.
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace zebdiag
{
namespace
{
// What the names of a language's libraries end with.
constexpr const wchar_t* kTextLibraries[] = {L"_NWR.dll", L"_8023.dll", L"Diag.dll"};
// Stands in for every language that is not there.
constexpr std::wstring_view kEnglish = L"ENU";
constexpr wchar_t kOurAgent[] = L"Vorl.dll";

// Where the provider looks for texts, in its order.
std::vector<std::wstring> TextFolders(const CExamination& exam)
{
    std::vector<std::wstring> folders;
    const struct
    {
        const wchar_t* Key;
        const wchar_t* Name;
        const wchar_t* Rest;
    } places[] = {{kProvidersKey, L"ResourcePath", L"\\"},
                  {kZebKey, L"ResourcePath", L""},
                  {kZebKey, L"ImagePath", L"WMI Providers\\bin\\"}};
    for (const auto& place : places)
        if (const auto folder = exam.Machine->Text(place.Key, place.Name))
            folders.push_back(*folder + place.Rest);
    folders.push_back(FolderOf(exam.Server));
    return folders;
}

std::wstring FileName(const std::wstring& path)
{
    return path.substr(FolderOf(path).size());
}

// The languages that this version has texts in, such as "DEU".
std::vector<std::wstring> TextLanguages()
{
    std::vector<std::wstring> languages;
    std::wistringstream all(L"" ZEB_TEXT_LANGUAGES);
    for (std::wstring language; all >> language;)
        languages.push_back(language);
    return languages;
}

// The files that are there, and the names of those that are not.
struct CFiles
{
    std::vector<std::wstring> There;
    std::vector<std::wstring> Missing;
};

CFiles FindLibraries(const CExamination& exam, const std::wstring& language)
{
    CFiles files;
    const auto folders = TextFolders(exam);
    for (const wchar_t* end : kTextLibraries)
    {
        const std::wstring library = language + end;
        const auto found =
            std::ranges::find_if(folders, [&](const std::wstring& folder)
                                 { return exam.Machine->Look(folder + library) == FileState::There; });
        if (found == folders.end())
            files.Missing.push_back(library);
        else
            files.There.push_back(*found + library);
    }
    return files;
}

CFiles FindFiles(const CExamination& exam)
{
    CFiles files;
    files.There.push_back(exam.Server);
    const auto agent = exam.Machine->Text(ClassKey(kAgentClass) + L"\\InprocServer32", L"");
    // The agent of an adapter's maker has versions of its own.
    if (agent && _wcsicmp(FileName(*agent).c_str(), kOurAgent) == 0 &&
        exam.Machine->Look(*agent) == FileState::There)
        files.There.push_back(*agent);
    for (const std::wstring& language : TextLanguages())
    {
        const CFiles libraries = FindLibraries(exam, language);
        if (libraries.There.empty() && language != kEnglish)
            continue;
        std::ranges::copy(libraries.There, std::back_inserter(files.There));
        std::ranges::copy(libraries.Missing, std::back_inserter(files.Missing));
    }
    return files;
}

// The part of the value up to its last backslash is the folder; what follows becomes part of the file's name.
CFinding JudgeFolder(const CExamination& exam, const std::wstring& value)
{
    if (!value.ends_with(L'\\'))
        return Wrong(
            Said(
                L"InstalledDir is \"{1}\", without a backslash at its end, so results go to \"{1}ZebDiag.bin\".",
                {value}),
            Said(L"Correct the value InstalledDir of HKLM\\{1}.", {kZebDiagKey}));
    const FileState state = exam.Machine->Look(value.substr(0, value.size() - 1));
    if (state == FileState::Missing)
        return Wrong(
            Said(L"{1} is not there, so no result is kept.", {value}),
            Said(
                L"Make that folder, or another one. Correct the value InstalledDir of HKLM\\{1} if it is another.",
                {kZebDiagKey}));
    const bool caller = exam.RunAs.empty();
    const std::wstring& who = exam.RunAs;
    switch (exam.Machine->MayWrite(value, exam.RunAs))
    {
    case Right::Yes:
        return Good(caller ? Said(L"{1}, where you may write.", {value})
                           : Said(L"{1}, where {2} may write.", {value, who}));
    case Right::No:
        return caller ? Unknown(Said(L"{1}, where you may not write. The provider runs as whoever starts it.",
                                     {value}),
                                Said(L"Run this as that user, or have the provider run as one account."))
                      : Wrong(Said(L"{1}, where {2} may not write, so no result is kept.", {value, who}),
                              Said(L"Let {1} change files in that folder.", {who}));
    default:
        return Unknown(caller ? Said(L"{1}. Whether you may write there is not told.", {value})
                              : Said(L"{1}. Whether {2} may write there is not told.", {value, who}),
                       Said(L"Look at the folder's permissions."));
    }
}
} // namespace

CFinding CheckFiles(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    if (exam.Server.empty())
        return AfterFault(Said(L"The provider's folder is not known."));
    const CFiles files = FindFiles(exam);
    const std::wstring copy = Said(L"Copy all files of one version into the provider's folder.");
    if (!files.Missing.empty())
        return Wrong(Said(L"Missing: {1}.", {Joined(files.Missing)}), copy);
    std::vector<std::wstring> others;
    std::vector<std::wstring> silent;
    for (const std::wstring& file : files.There)
    {
        const std::wstring version = exam.Machine->VersionOf(file);
        if (version.empty())
            silent.push_back(FileName(file));
        else if (version != kOwnVersion)
            others.push_back(FileName(file) + L" " + version);
    }
    if (!others.empty())
        return Wrong(Said(L"zebdiag has version {1}, but there are other versions: {2}.",
                          {kOwnVersion, Joined(others)}),
                     copy);
    if (!silent.empty())
        return Unknown(Said(L"No version is told by {1}.", {Joined(silent)}), copy);
    return Good(Said(L"All are there, version {1}.", {kOwnVersion}));
}

CFinding CheckDataFolder(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    CFinding finding = JudgeFolder(exam, DataFolder(*exam.Machine));
    if (finding.State == PointState::Good)
        finding.Text += exam.Machine->Number(kZebDiagKey, L"StoreAfterRun").value_or(0) == 1
                            ? L" " + Said(L"Results are stored after each run.")
                            : L" " + Said(L"Results are stored when the provider ends.");
    return finding;
}
} // namespace zebdiag
