#include "agent/scripted/CallCounts.h"

#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"

#include <nlohmann/json.hpp>

namespace
{
nlohmann::json ToJson(const std::map<Call, ULONG>& counts)
{
    nlohmann::json object = nlohmann::json::object();
    for (const auto& [call, count] : counts)
        object[CallName(call)] = count;
    return object;
}

nlohmann::json ToJson(const std::map<std::string, std::map<Call, ULONG>>& scopes)
{
    nlohmann::json object = nlohmann::json::object();
    for (const auto& [name, counts] : scopes)
        object[name] = ToJson(counts);
    return object;
}

// The name that the engine gives a test, such as A@ADAPTER-1.
std::string TestName(const std::wstring& adapterKey, ULONG testId)
{
    char number[9] = {};
    _snprintf(number, sizeof number, "%lX", testId);
    return std::string(number) + "@" + Utf8Text(adapterKey);
}

bool WriteWhole(const std::wstring& file, const std::string& text)
{
    const CFileHandle handle(
        CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return handle &&
           WriteFile(handle.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
           written == text.size();
}

// A reader that has the old file open at this moment makes the replacement fail; nothing tells when it is
// done.
bool Replace(const std::wstring& file, const std::wstring& with)
{
    for (int attempt = 0; attempt < 100; ++attempt)
    {
        if (MoveFileExW(with.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING))
            return true;
        Sleep(10);
    }
    return false;
}
} // namespace

CCallCounts::CCallCounts(std::wstring file) : m_file(std::move(file))
{
    Publish();
}

CCallCounts::CNumbers CCallCounts::Count(Call call, const std::wstring& adapterKey,
                                         std::optional<ULONG> testId)
{
    const std::lock_guard lock(m_mutex);
    CNumbers numbers;
    numbers.InAll = ++m_inAll[call];
    if (!adapterKey.empty())
        numbers.OfAdapter = ++m_ofAdapter[Utf8Text(adapterKey)][call];
    if (testId)
        numbers.OfTest = ++m_ofTest[TestName(adapterKey, *testId)][call];
    Publish();
    return numbers;
}

void CCallCounts::Publish() const
{
    if (m_file.empty())
        return;
    const nlohmann::json document = {
        {"Calls", ToJson(m_inAll)}, {"Adapters", ToJson(m_ofAdapter)}, {"Tests", ToJson(m_ofTest)}};
    const std::wstring next = m_file + L".new";
    if (!WriteWhole(next, document.dump(2) + "\n") || !Replace(m_file, next))
        OutputDebugStringA("The counts file of the scripted agent could not be written.\n");
}
