// The provider as the schema and COM know it.
#include "tools/zebdiag/WmiValue.h"
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/DescriptorBounds.h"
#include "tools/zebdiag/doctor/Places.h"

#include <sddl.h>

#include "Common/src/com/Owned.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
constexpr const wchar_t* kCompile =
    Marked(L"Compile the schema as an administrator: \"mofcomp zebdiag.mof\".");
constexpr const wchar_t* kRegister =
    Marked(L"Register the provider as an administrator: \"Drevok.EXE /RegServer\".");

struct LocalWideTextTraits
{
    using Type = wchar_t*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type text) noexcept { LocalFree(text); }
};

// The registration in the schema; null if it is as it must be.
std::optional<CFinding> FaultOfSchemaRegistration(const CExamination& exam)
{
    if (!exam.SchemaGood)
        return std::nullopt;
    const WmiObject provider = exam.Session->TryGet(
        L"__Win32Provider.Name=\"" + std::wstring(kProviderName) + L"\"", L"__Win32Provider");
    if (!provider)
        return Wrong(Said(L"{1} names no provider {2}.", {exam.Target.Namespace, kProviderName}),
                     Said(kCompile));
    const std::wstring id = ReadText(provider.Get(), L"CLSID").value_or(L"");
    if (_wcsicmp(id.c_str(), kProviderClass) != 0)
        return Wrong(Said(L"{1} is the class {2} there, and not {3}.", {kProviderName, id, kProviderClass}),
                     Said(kCompile));
    return std::nullopt;
}

// Own permissions as a text; "the computer's" where the application has none. False for bytes that are none.
bool PermissionsInWords(const IMachine& machine, const wchar_t* value, std::wstring& words)
{
    const auto bytes = machine.Bytes(AppIdKey(kAppId), value);
    words = Said(L"as the computer's default");
    if (!bytes)
        return true;
    std::vector<BYTE> copy = *bytes;
    COwned<LocalWideTextTraits> text;
    if (!IsWholeDescriptor(copy) || !IsValidSecurityDescriptor(copy.data()) ||
        !ConvertSecurityDescriptorToStringSecurityDescriptorW(copy.data(), SDDL_REVISION_1,
                                                              DACL_SECURITY_INFORMATION, text.Put(), nullptr))
        return false;
    words = text.Get();
    return true;
}
} // namespace

CFinding CheckRegistration(CExamination& exam)
{
    if (const auto fault = FaultOfSchemaRegistration(exam))
        return *fault;
    if (!exam.Machine)
        return OnlyThere(exam);
    const auto command = exam.Machine->Text(ClassKey(kProviderClass) + L"\\LocalServer32", L"");
    if (!command || command->empty())
        return Wrong(Said(L"COM does not know the provider: its class has no LocalServer32."),
                     Said(kRegister));
    const std::wstring program = ProgramOf(*command);
    switch (exam.Machine->Look(program))
    {
    case FileState::There:
        exam.Server = program;
        return Good(exam.SchemaGood ? program
                                    : Said(L"{1} (known to COM; the schema cannot be read)", {program}));
    case FileState::Missing:
        return Wrong(
            Said(L"It is registered as {1}, which is not there.", {program}),
            Said(
                L"Put the files back, or go to the folder where they are and register the provider there as an administrator: \"Drevok.EXE /RegServer\"."));
    default:
        return Unknown(Said(L"It is registered as {1}, which you may not look at.", {program}),
                       Said(L"Run this as an administrator."));
    }
}

CFinding CheckIdentity(CExamination& exam)
{
    if (!exam.Machine)
        return OnlyThere(exam);
    const auto appId = exam.Machine->Text(ClassKey(kProviderClass), L"AppID");
    if (!appId)
        return exam.Server.empty() ? AfterFault(Said(L"The provider is not registered."))
                                   : Wrong(Said(L"The provider's class has no AppID."), Said(kRegister));
    if (_wcsicmp(appId->c_str(), kAppId) != 0)
        return Wrong(Said(L"The provider's class has another AppID: {1}.", {*appId}), Said(kRegister));
    exam.RunAs = exam.Machine->Text(AppIdKey(kAppId), L"RunAs").value_or(L"");
    std::wstring launch;
    std::wstring access;
    if (!PermissionsInWords(*exam.Machine, L"LaunchPermission", launch) ||
        !PermissionsInWords(*exam.Machine, L"AccessPermission", access))
        return Wrong(Said(L"The permissions of the COM application are damaged."),
                     Said(L"Set them anew with \"dcomcnfg\", under \"Drevok\", as an administrator."));
    const std::wstring permissions =
        L" " + Said(L"Launch permissions: {1}; access permissions: {2}.", {launch, access});
    if (exam.RunAs.empty())
        return Unknown(Said(L"No account is set, so the provider runs as whoever starts it.") + permissions,
                       Said(L"To have it run as one account at all times, set the value RunAs of HKLM\\{1}.",
                            {AppIdKey(kAppId)}));
    if (exam.Machine->Exists(exam.RunAs) == Right::No)
        return Wrong(Said(L"The provider is to run as {1}, and there is no such account.", {exam.RunAs}),
                     Said(L"Correct the value RunAs of HKLM\\{1}.", {AppIdKey(kAppId)}));
    return Good(Said(L"The provider runs as {1}.", {exam.RunAs}) + permissions);
}
} // namespace zebdiag
