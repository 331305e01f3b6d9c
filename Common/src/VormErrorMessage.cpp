#include "Common/src/VormErrorMessage.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebImpResourceMgr.h"
#include "CDM/src/ZebTrace.h"
#include "Common/src/com/Owned.h"

namespace
{
constexpr char kTable[] = "_8023";
constexpr UINT kUnknownError = 100;

// Agents mark their codes with bits 31 and 18. A wrapped Win32 error, such as access denied or a proxy whose
// server is gone, has these bits too, but its text is the system's.
bool IsAgentError(HRESULT hr) noexcept
{
    return (hr & 0x80040000) == 0x80040000 && HRESULT_FACILITY(hr) != FACILITY_WIN32;
}

void FormatSystemError(DWORD code, std::string& text, LCID locale)
{
    CLocalText message;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code,
                       LANGIDFROMLCID(locale), reinterpret_cast<char*>(message.Put()), 0, nullptr);
    if (length > 0)
        text.assign(message.Get(), length < 2 ? 0 : length - 2); // without the CR LF
}
} // namespace

void FormatVorlErrorMessage(HRESULT hr, std::string& text, CZebImpResourceMgr& resources, LCID locale)
{
    CZebTrace trace("FormatVorlErrorMessage");
    const auto code = static_cast<DWORD>(hr);
    if (!IsAgentError(hr))
        FormatSystemError(code, text, locale);
    else
    {
        const UINT id = (code & 0x7FFF) | 0x8000;
        ZebDebug().Write("HR = 0x%x ID = 0x%x", code, id);
        text = resources.FindString(locale, id, kTable);
    }
    if (text.empty())
    {
        char message[1025] = {}; // the most that wsprintf writes
        wsprintfA(message, resources.FindString(locale, kUnknownError, kTable).c_str(), code);
        text = message;
    }
}
