// What is thrown when a request fails inside the provider. Thrown by value, caught by const reference at the
// request's barrier, which reports it to the client (WomExtendedStatus).
#pragma once

#include "Common/src/com/Bstr.h"

#include <string>
#include <vector>
#include <windows.h>

class CWomContext;

void TracePartLost() noexcept;
// Does one part of a report by itself: if it fails, which is traced, the other parts still reach the client.
template <class Part>
void TryPart(Part&& part) noexcept
{
    try
    {
        part();
    }
    catch (...)
    {
        TracePartLost();
    }
}

class CWomProviderException
{
  public:
    // `context` is not owned and may be null; `sourceFile` is a constant of the program. The other texts are
    // copied; if memory runs out, they stay empty, so that the failure itself is not lost.
    CWomProviderException(CWomContext* context, HRESULT statusCode, const wchar_t* parameterInfo,
                          HRESULT requestResult, const char* sourceFile, long line, const char* messageText,
                          const std::vector<CBstr>& reasons) noexcept;
    CWomProviderException(CWomProviderException&&) noexcept = default;
    CWomProviderException(const CWomProviderException&) = default;

    CWomContext* Context() const noexcept { return m_context; }
    // The code that the client finds in StatusCode.
    HRESULT StatusCode() const noexcept { return m_statusCode; }
    const wchar_t* ParameterInfo() const noexcept { return m_parameterInfo.Text(); }
    // What the request returns.
    HRESULT RequestResult() const noexcept { return m_requestResult; }
    const char* SourceFile() const noexcept { return m_sourceFile; }
    long Line() const noexcept { return m_line; }
    const char* MessageText() const noexcept { return m_messageText.c_str(); }
    const std::vector<CBstr>& Reasons() const noexcept { return m_reasons; }

    // The message text, then the codes and the text of the request result in parentheses.
    CBstr Description() const;

  private:
    CWomContext* m_context;
    HRESULT m_statusCode;
    CBstr m_parameterInfo;
    HRESULT m_requestResult;
    const char* m_sourceFile;
    long m_line;
    std::string m_messageText;
    std::vector<CBstr> m_reasons;
};
