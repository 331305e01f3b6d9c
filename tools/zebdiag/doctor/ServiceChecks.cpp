// The management service, its namespace and the classes in it.
#include "Common/src/com/Bstr.h"
#include "Common/src/com/WmiStatus.h"
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <iterator>

namespace zebdiag
{
namespace
{
constexpr const wchar_t* kBaseClasses[] = {L"CIM_NetworkAdapter",         L"CIM_DiagnosticTest",
                                           L"CIM_DiagnosticResult",       L"CIM_DiagnosticSetting",
                                           L"CIM_DiagnosticResultForMSE", L"CIM_DiagnosticResultForTest",
                                           L"CIM_DiagnosticTestForMSE",   L"CIM_DiagnosticSettingForTest"};

constexpr const wchar_t* kServedClasses[] = {kTestClass,
                                             kResultClass,
                                             kSettingClass,
                                             L"Tolva_DiagResultForMSE",
                                             L"Tolva_DiagResultForTest",
                                             L"Tolva_DiagSettingForTest",
                                             L"Tolva_DiagTestForMSE",
                                             L"Tolva_EthernetAdapter",
                                             L"Tolva_ExtendedStatus"};

constexpr const wchar_t* kCompileThisVersion =
    Marked(L"Compile this version's schema as an administrator: \"mofcomp zebdiag.mof\".");

// With these the service itself has refused, so it is there.
bool IsAnswer(HRESULT status)
{
    constexpr HRESULT kAnswers[] = {wmi::InvalidNamespace, wmi::AccessDenied, E_ACCESSDENIED,
                                    wmi::InvalidParameter};
    return std::ranges::find(kAnswers, status) != std::end(kAnswers);
}

template <size_t Count>
std::vector<std::wstring> MissingOf(const CWmiSession& session, const wchar_t* const (&names)[Count])
{
    std::vector<std::wstring> missing;
    for (const wchar_t* name : names)
        if (!session.TryGet(name, name))
            missing.push_back(name);
    return missing;
}

// What the schema says of itself; empty for one that says nothing.
std::wstring VersionOfSchema(const CWmiSession& session)
{
    const WmiObject definition = session.TryGet(kTestClass, kTestClass);
    ComPtr<IWbemQualifierSet> qualifiers;
    CVariant version;
    if (!definition || FAILED(definition->GetQualifierSet(qualifiers.Put())) ||
        FAILED(qualifiers->Get(L"Version", 0, version.Put(), nullptr)) || version.vt != VT_BSTR)
        return {};
    return version.bstrVal;
}
} // namespace

CFinding CheckService(CExamination& exam)
{
    try
    {
        exam.Session.emplace(exam.Connect());
    }
    catch (const CFailure& failure)
    {
        exam.NotConnected.emplace(failure);
        if (!IsAnswer(failure.Status))
            return Wrong(failure);
    }
    return Good(Said(L"It answers."));
}

CFinding CheckNamespace(CExamination& exam)
{
    if (exam.Session)
        return Good(Said(L"{1} is there and may be used.", {exam.Target.Namespace}));
    return IsAnswer(exam.NotConnected->Status) ? Wrong(*exam.NotConnected)
                                               : AfterFault(Said(L"The service cannot be asked for it."));
}

CFinding CheckBaseClasses(CExamination& exam)
{
    if (!exam.Session)
        return AfterFault(Said(L"The namespace cannot be read."));
    const auto missing = MissingOf(*exam.Session, kBaseClasses);
    if (missing.empty())
        return Good(Said(L"All are there."));
    return Wrong(
        Said(L"{1} lacks {2}.", {exam.Target.Namespace, Joined(missing)}),
        Said(
            L"Windows has these classes in root\\cimv2: leave out --namespace, or check the service's repository with \"winmgmt /verifyrepository\" and repair it."));
}

CFinding CheckSchema(CExamination& exam)
{
    if (!exam.Session || exam.Blocked)
        return AfterFault(Said(L"It cannot be there without what it builds on."));
    const auto missing = MissingOf(*exam.Session, kServedClasses);
    if (!missing.empty())
        return Wrong(Said(L"{1} lacks {2}.", {exam.Target.Namespace, Joined(missing)}),
                     Said(kCompileThisVersion));
    exam.SchemaGood = true;
    const std::wstring version = VersionOfSchema(*exam.Session);
    if (version == kOwnVersion)
        return Good(Said(L"All classes are there, version {1}.", {version}));
    return Wrong(version.empty() ? Said(L"It is older than version {1}, which zebdiag has.", {kOwnVersion})
                                 : Said(L"It has version {1}, zebdiag has {2}.", {version, kOwnVersion}),
                 Said(kCompileThisVersion));
}
} // namespace zebdiag
