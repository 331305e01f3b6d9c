// The registry values that keep the provider from starting.
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
CFinding CheckConfiguration(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    for (const wchar_t* name : {L"Enable", L"FileAppend"})
        if (const auto value = exam.Machine->Number(kZebDiagKey, name); value && *value > 1)
            return Wrong(
                Said(L"The registry value {1} is {2}. It has to be 0 or 1; with another one the provider "
                     L"does not start.",
                     {name, std::to_wstring(*value)}),
                Said(L"As an administrator set {1} of HKEY_LOCAL_MACHINE\\{2} to 0 or 1, or delete it.",
                     {name, kZebDiagKey}));
    return Good(Said(L"No registry value keeps the provider from starting."));
}
} // namespace zebdiag
