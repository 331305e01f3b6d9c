// The trace: whether it is on and where it goes.
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
std::wstring TraceFile(const IMachine& machine)
{
    std::wstring file = machine.Text(kZebDiagKey, L"DebugFileName").value_or(L"ZebDiagDbg.log");
    if (machine.Number(kZebKey, L"LogFilePerProcess").value_or(0) != 0)
        file = Said(L"NUMBER-{1} (NUMBER is that of the process)", {file});
    if (const auto image = machine.Text(kZebKey, L"ImagePath"))
        file = *image + L"\\DebugLog\\" + file;
    return file;
}

bool IsWholePath(const std::wstring& file)
{
    const std::wstring folder = FolderOf(file);
    return folder.size() >= 2 && (folder[1] == L':' || folder.starts_with(L"\\\\"));
}
} // namespace

std::wstring HowToReadTrace(const IMachine& machine)
{
    const std::wstring file = TraceFile(machine);
    if (machine.Number(kZebDiagKey, L"DebugLevel").value_or(0) == 0)
        return Said(
            IsWholePath(file)
                ? Marked(L"Switch the provider's trace on: as an administrator set DebugLevel (REG_DWORD) of "
                         L"HKEY_LOCAL_MACHINE\\{1} to 2, try again, and read {2}.")
                : Marked(
                      L"Switch the provider's trace on: as an administrator set DebugLevel (REG_DWORD) of "
                      L"HKEY_LOCAL_MACHINE\\{1} to 2 and DebugFileName (REG_SZ) to the full path of a file, try "
                      L"again, and read that file."),
            {kZebDiagKey, file});
    return Said(
        IsWholePath(file)
            ? Marked(L"The provider's trace is on; read {1}.")
            : Marked(
                  L"The provider's trace is on, in the file {1} of the folder in which the provider was started."),
        {file});
}

CFinding CheckTrace(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    const DWORD level = exam.Machine->Number(kZebDiagKey, L"DebugLevel").value_or(0);
    const std::wstring file = TraceFile(*exam.Machine);
    if (level == 0)
        return Good(Said(L"Off. DebugLevel 1 or 2 would switch it on, to {1}.", {file}));
    const std::wstring on = Said(L"On, level {1}, to {2}.", {std::to_wstring(level), file});
    if (!IsWholePath(file))
        return Unknown(on + L" " + Said(L"That is in the folder in which the provider was started."),
                       Said(L"Give DebugFileName a full path."));
    const std::wstring folder = FolderOf(file);
    if (exam.Machine->Look(folder.substr(0, folder.size() - 1)) == FileState::Missing)
        return Wrong(on + L" " + Said(L"That folder is not there, so nothing is written."),
                     Said(L"Make the folder, or name another one in DebugFileName."));
    return Good(on);
}
} // namespace zebdiag
