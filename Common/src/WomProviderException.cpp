#include "Common/src/WomProviderException.h"

#include "CDM/src/ZebDebug.h"
#include "Common/src/VormErrorMessage.h"
#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <cstdio>

CWomProviderException::CWomProviderException(CWomContext* context, HRESULT statusCode,
                                             const wchar_t* parameterInfo, HRESULT requestResult,
                                             const char* sourceFile, long line, const char* messageText,
                                             const std::vector<CBstr>& reasons) noexcept
    : m_context(context), m_statusCode(statusCode), m_requestResult(requestResult), m_sourceFile(sourceFile),
      m_line(line)
{
    AtComBoundary(
        [&]
        {
            m_parameterInfo = CBstr(parameterInfo);
            m_messageText = messageText ? messageText : "";
            m_reasons = reasons;
            return S_OK;
        });
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
    AtComBoundary(
        [&]() -> HRESULT
        {
            if (!m_context || !sink)
                return E_POINTER;
            CWomClassObject status(m_context);
            status.SetThrowing(false);
            if (const HRESULT hr = status.CreateInstance(L"Tolva_ExtendedStatus"); FAILED(hr))
                return hr;

            // Each step for itself: what cannot be told does not keep the rest from the client.
            const auto step = [](auto&& body) noexcept { AtComBoundary(body); };
            step([&] { return status.SetProperty(L"Description", Description().Text()); });
            step([&] { return status.SetProperty(L"Operation", m_context->OperationName()); });
            step([&] { return status.SetProperty(L"ParameterInfo", m_parameterInfo.Text()); });
            step([&] { return status.SetProperty(L"ProviderName", m_context->ProviderName()); });
            step([&] { return status.SetProperty(L"StatusCode", static_cast<long>(m_statusCode)); });
            step([&] { return status.SetProperty(L"File", WidenText(m_sourceFile).c_str()); });
            step([&] { return status.SetProperty(L"Line", m_line); });
            step([&] { return status.SetProperty(L"SessionHandle", m_context->SessionHandle()); });
            step([&] { return status.SetProperty(L"RuleFailureReasons", m_reasons); });
            step(
                [&]
                {
                    status.DebugOutput();
                    return S_OK;
                });
            return sink->SetStatus(WBEM_STATUS_COMPLETE, wmi::Failed, nullptr, status.Object());
        });
}
