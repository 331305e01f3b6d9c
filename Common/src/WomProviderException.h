// What is thrown when a request fails inside the provider, and how the failure reaches the client: as an
// instance of Tolva_ExtendedStatus. Thrown by value, caught by const reference at the request's barrier.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <string>
#include <vector>
#include <wbemcli.h>

class CWomContext;

class CWomProviderException
{
  public:
    // `context` is not owned and may be null; `sourceFile` is a constant of the program. The other texts are
    // copied; where memory runs out, they are left empty rather than the failure lost.
    CWomProviderException(CWomContext* context, HRESULT statusCode, const wchar_t* parameterInfo,
                          HRESULT requestResult, const char* sourceFile, long line, const char* messageText,
                          const std::vector<CBstr>& reasons) noexcept;
    CWomProviderException(CWomProviderException&&) noexcept = default;
    CWomProviderException(const CWomProviderException&) = default;

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
    // Ends the request on the sink with the extended status. Where that instance cannot be made, nothing is
    // sent. The sink's reference is released in every case.
    void ReportToSink(ComPtr<IWbemObjectSink> sink) const noexcept;

  private:
    void Report(IWbemObjectSink& sink) const;

    CWomContext* m_context;
    HRESULT m_statusCode;
    CBstr m_parameterInfo;
    HRESULT m_requestResult;
    const char* m_sourceFile;
    long m_line;
    std::string m_messageText;
    std::vector<CBstr> m_reasons;
};
