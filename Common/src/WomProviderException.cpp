#include "Common/src/WomProviderException.h"

#include "CDM/src/ZebDebug.h"
#include "Common/src/VormErrorMessage.h"
#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <cstdio>

namespace
{
// Does one step for itself: what cannot be told does not keep the rest from the client.
template <class Body>
void Step(Body&& body) noexcept
{
    try
    {
        body();
    }
    catch (...)
    {
        ZebDebug().Write("CWomProviderException: a part of the report was lost");
    }
}
} // namespace

CWomProviderException::CWomProviderException(CWomContext* context, HRESULT statusCode,
                                             const wchar_t* parameterInfo, HRESULT requestResult,
                                             const char* sourceFile, long line, const char* messageText,
                                             const std::vector<CBstr>& reasons) noexcept
    : m_context(context), m_statusCode(statusCode), m_requestResult(requestResult),
      m_sourceFile(sourceFile ? sourceFile : ""), m_line(line)
{
    Step([&] { m_parameterInfo = CBstr(parameterInfo); });
    Step([&] { m_messageText = messageText ? messageText : ""; });
    Step([&] { m_reasons = reasons; });
    ZebDebug().Write("Exception: %s %d", m_sourceFile, static_cast<int>(m_line));
}

CBstr CWomProviderException::Description() const
{
    char codes[64];
    _snprintf(codes, sizeof(codes), "status 0x%x, result 0x%x", static_cast<unsigned>(m_statusCode),
              static_cast<unsigned>(m_requestResult));
    std::string parts = codes;
    if (m_context && m_context->Resources())
    {
        std::string resultText;
        FormatVorlErrorMessage(m_requestResult, resultText, *m_context->Resources(), m_context->Locale());
        if (!resultText.empty())
            parts += ": " + resultText;
    }
    return CBstr(WidenText(m_messageText + " (" + parts + ")"));
}

void CWomProviderException::ReportToSink(ComPtr<IWbemObjectSink> sink) const noexcept
{
    if (m_context && sink)
        Step([&] { Report(*sink); });
}

void CWomProviderException::Report(IWbemObjectSink& sink) const
{
    CWomClassObject status(m_context);
    status.SetThrowing(false);
    if (FAILED(status.CreateInstance(L"Tolva_ExtendedStatus")))
        return;
    Step([&] { status.SetProperty(L"Description", Description().Text()); });
    Step([&] { status.SetProperty(L"Operation", m_context->OperationName()); });
    Step([&] { status.SetProperty(L"ParameterInfo", m_parameterInfo.Text()); });
    Step([&] { status.SetProperty(L"ProviderName", m_context->ProviderName()); });
    Step([&] { status.SetProperty(L"StatusCode", static_cast<long>(m_statusCode)); });
    Step([&] { status.SetProperty(L"File", WidenText(m_sourceFile).c_str()); });
    Step([&] { status.SetProperty(L"Line", m_line); });
    Step([&] { status.SetProperty(L"SessionHandle", m_context->SessionHandle()); });
    Step([&] { status.SetProperty(L"RuleFailureReasons", m_reasons); });
    Step([&] { status.DebugOutput(); });
    sink.SetStatus(WBEM_STATUS_COMPLETE, wmi::Failed, nullptr, status.Object());
}
