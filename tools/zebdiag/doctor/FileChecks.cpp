// The files of the installation and what it writes.
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr const wchar_t* kTextLibraries[] = {L"ENU_NWR.dll", L"ENU_8023.dll", L"ENUDiag.dll"};
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

// The files that are there, and the names of those that are not.
struct CFiles
{
    std::vector<std::wstring> There;
    std::vector<std::wstring> Missing;
};

CFiles FindFiles(const CExamination& exam)
{
    CFiles files;
    files.There.push_back(exam.Server);
    const auto agent = exam.Machine->Text(ClassKey(kAgentClass) + L"\\InprocServer32", L"");
    // The agent of an adapter's maker has versions of its own.
    if (agent && _wcsicmp(FileName(*agent).c_str(), kOurAgent) == 0 &&
        exam.Machine->Look(*agent) == FileState::There)
        files.There.push_back(*agent);
    const auto folders = TextFolders(exam);
    for (const wchar_t* library : kTextLibraries)
    {
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

// The part of the value up to its last backslash is the folder; what follows becomes part of the file's name.
CFinding JudgeFolder(const CExamination& exam, const std::wstring& value)
{
    constexpr wchar_t kCorrect[] =
        L"Correct the value InstalledDir of HKLM\\SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";
    if (!value.ends_with(L'\\'))
        return Wrong(L"InstalledDir is \"" + value +
                         L"\", without a backslash at its end, so results go to \"" + value +
                         L"ZebDiag.bin\".",
                     std::wstring(kCorrect) + L".");
    const FileState state = exam.Machine->Look(value.substr(0, value.size() - 1));
    if (state == FileState::Missing)
        return Wrong(value + L" is not there, so no result is kept.",
                     std::wstring(L"Make that folder, or another one. ") + kCorrect + L" if it is another.");
    const std::wstring who = exam.RunAs.empty() ? L"you" : exam.RunAs;
    switch (exam.Machine->MayWrite(value, exam.RunAs))
    {
    case Right::Yes:
        return Good(value + L", where " + who + L" may write.");
    case Right::No:
        return exam.RunAs.empty()
                   ? Unknown(value + L", where you may not write. The provider runs as whoever starts it.",
                             L"Run this as that user, or have the provider run as one account.")
                   : Wrong(value + L", where " + who + L" may not write, so no result is kept.",
                           L"Let " + who + L" change files in that folder.");
    default:
        return Unknown(value + L". Whether " + who + L" may write there is not told.",
                       L"Look at the folder's permissions.");
    }
}
} // namespace

CFinding CheckFiles(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    if (exam.Server.empty())
        return AfterFault(L"The provider's folder is not known.");
    const CFiles files = FindFiles(exam);
    constexpr wchar_t kCopy[] = L"Copy all files of one version into the provider's folder.";
    if (!files.Missing.empty())
        return Wrong(L"Missing: " + Joined(files.Missing) + L".", kCopy);
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
        return Wrong(L"zebdiag has version " + std::wstring(kOwnVersion) + L", but " + Joined(others) + L".",
                     kCopy);
    if (!silent.empty())
        return Unknown(L"No version is told by " + Joined(silent) + L".", kCopy);
    return Good(L"All are there, version " + std::wstring(kOwnVersion) + L".");
}

CFinding CheckDataFolder(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    CFinding finding = JudgeFolder(exam, DataFolder(*exam.Machine));
    if (finding.State == PointState::Good)
        finding.Text += exam.Machine->Number(kZebDiagKey, L"StoreAfterRun").value_or(0) == 1
                            ? L" Results are stored after each run."
                            : L" Results are stored when the provider ends.";
    return finding;
}
} // namespace zebdiag
