#include "Common/src/WomProviderException.h"

#include "CDM/src/ZebDebug.h"
#include "Common/src/VormErrorMessage.h"
#include "Common/src/WomContext.h"
#include "Common/src/com/Text.h"

#include <cstdio>

void TracePartLost() noexcept
{
    ZebDebug().Write("CWomProviderException: a part of the report was lost");
}

CWomProviderException::CWomProviderException(CWomContext* context, HRESULT statusCode,
                                             const wchar_t* parameterInfo, HRESULT requestResult,
                                             const char* sourceFile, long line, const char* messageText,
                                             const std::vector<CBstr>& reasons) noexcept
    : m_context(context), m_statusCode(statusCode), m_requestResult(requestResult),
      m_sourceFile(sourceFile ? sourceFile : ""), m_line(line)
{
    TryPart([&] { m_parameterInfo = CBstr(parameterInfo); });
    TryPart([&] { m_messageText = messageText ? messageText : ""; });
    TryPart([&] { m_reasons = reasons; });
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
