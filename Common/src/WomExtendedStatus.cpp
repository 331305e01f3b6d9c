#include "Common/src/WomExtendedStatus.h"

#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

namespace
{
void Report(const CWomProviderException& exception, CWomContext& context, IWbemObjectSink& sink)
{
    CWomClassObject status(&context);
    status.SetThrowing(false);
    if (FAILED(status.CreateInstance(L"Tolva_ExtendedStatus")))
        return;
    TryPart([&] { status.SetProperty(L"Description", exception.Description().Text()); });
    TryPart([&] { status.SetProperty(L"Operation", context.OperationName()); });
    TryPart([&] { status.SetProperty(L"ParameterInfo", exception.ParameterInfo()); });
    TryPart([&] { status.SetProperty(L"ProviderName", context.ProviderName()); });
    TryPart([&] { status.SetProperty(L"StatusCode", static_cast<long>(exception.StatusCode())); });
    TryPart([&] { status.SetProperty(L"File", WidenText(exception.SourceFile()).c_str()); });
    TryPart([&] { status.SetProperty(L"Line", exception.Line()); });
    TryPart([&] { status.SetProperty(L"SessionHandle", context.SessionHandle()); });
    TryPart([&] { status.SetProperty(L"RuleFailureReasons", exception.Reasons()); });
    TryPart([&] { status.DebugOutput(); });
    sink.SetStatus(WBEM_STATUS_COMPLETE, wmi::Failed, nullptr, status.Object());
}
} // namespace

void ReportToSink(const CWomProviderException& exception, ComPtr<IWbemObjectSink> sink) noexcept
{
    if (CWomContext* const context = exception.Context(); context && sink)
        TryPart([&] { Report(exception, *context, *sink); });
}
