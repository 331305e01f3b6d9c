#include "CDM/src/classes/ResultLines.h"

#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/DiagRecords.h"
#include "Common/src/VormErrorMessage.h"
#include "Common/src/WomContext.h"
#include "Common/src/com/Text.h"

#include <algorithm>
#include <string>

namespace
{
// A line, its terminator included, never exceeds this.
constexpr size_t kLineCharacters = 4096;
// With fewer entries a sender/responder result holds no counters, but the reason of a failure.
constexpr size_t kLeastCounters = 3;

std::wstring AgentErrorText(CWomContext& context, ULONG code)
{
    std::string text;
    if (CZebImpResourceMgr* const resources = context.Resources())
        FormatVorlErrorMessage(static_cast<HRESULT>(code), text, *resources, context.Locale());
    return WidenText(text);
}
} // namespace

HRESULT BuildResultLines(CWomContext& context, const CResultData& record, const wchar_t* timeStamp,
                         const wchar_t* title, std::vector<CBstr>& lines)
{
    // The lists may be ahead of each other while a run adds a message.
    const size_t count =
        std::min({size_t{record.MessageCount}, record.StringIDs.size(), record.TestMessages.size()});
    const bool counters = record.SenderResponder != 0 && count >= kLeastCounters;
    const std::wstring start = std::wstring(timeStamp) + L"|" + title + L"|";
    for (size_t i = 0; i < count; ++i)
    {
        const UINT id = record.StringIDs[i];
        const ULONG value = record.TestMessages[i];
        std::wstring line = start;
        CBstr text;
        if (counters)
        {
            const HRESULT hr = context.GetResourceString(id, "Diag", text);
            if (Failed(
                    hr,
                    "CTolva_DiagResult::SendInstance:GetResourceString for Sender/Responder test failed <%x>"))
                return hr;
            line.append(text.View()).append(std::to_wstring(static_cast<LONG>(value)));
        }
        else if (id != 0)
        {
            const HRESULT hr = context.GetResourceString(id, "_8023", text);
            if (Failed(hr, "CTolva_DiagResult::SendInstance:GetResourceString for Normal test failed <%x>"))
                return hr;
            line.append(text.View());
        }
        else
            line.append(AgentErrorText(context, value));
        if (line.size() >= kLineCharacters)
            line.resize(kLineCharacters - 1);
        lines.emplace_back(std::wstring_view(line));
    }
    return S_OK;
}
