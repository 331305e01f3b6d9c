#include "standin/service/Connection.h"

#include "Common/src/com/Variant.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/Objects.h"

namespace standin
{
namespace
{
constexpr wchar_t kLocaleId[] = L"LocaleID";

// What the provider is to see: the client's context, completed by the locale of the connection.
ComPtr<IWbemContext> WithLocale(IWbemContext* given, const std::wstring& locale)
{
    ComPtr<IWbemContext> context;
    if (given)
    {
        CVariant own;
        if (locale.empty() || SUCCEEDED(given->GetValue(kLocaleId, 0, own.Put())) ||
            FAILED(given->Clone(context.Put())))
            return given;
    }
    else
        context = MakeContext();
    if (!locale.empty())
    {
        CVariant value = CVariant::FromText(locale.c_str());
        context->SetValue(kLocaleId, 0, &value);
    }
    return context;
}
} // namespace

CConnection::CConnection(CServiceLife& life, bool counts, std::wstring nameSpace, std::wstring locale,
                         std::shared_ptr<const CHandle> client)
    : m_life(life), m_counts(counts), m_nameSpace(std::move(nameSpace)), m_locale(std::move(locale)),
      m_client(std::move(client)), m_use(counts ? CServiceLife::CUse(life) : CServiceLife::CUse())
{
}

std::shared_ptr<CRequest> CConnection::Open(IWbemObjectSink* sink, long flags, IWbemContext* context)
{
    auto request =
        std::make_shared<CRequest>(CServiceLife::CUse(m_life), sink, flags, WithLocale(context, m_locale));
    const CLockScope lock(m_lock);
    std::erase_if(m_requests, [](const std::weak_ptr<CRequest>& old) { return old.expired(); });
    m_requests.push_back(request);
    return request;
}

std::vector<std::shared_ptr<CRequest>> CConnection::Running()
{
    std::vector<std::shared_ptr<CRequest>> running;
    const CLockScope lock(m_lock);
    for (const std::weak_ptr<CRequest>& weak : m_requests)
        if (std::shared_ptr<CRequest> request = weak.lock())
            running.push_back(std::move(request));
    return running;
}

bool CConnection::Cancel(IWbemObjectSink* sink)
{
    bool any = false;
    for (const std::shared_ptr<CRequest>& request : Running())
        if (request->AnswersTo(sink))
        {
            request->Cancel();
            any = true;
        }
    return any;
}

bool CConnection::ClientIsGone() const
{
    return m_client && WaitForSingleObject(m_client->Get(), 0) == WAIT_OBJECT_0;
}

void CConnection::Abandon()
{
    for (const std::shared_ptr<CRequest>& request : Running())
        request->Abandon();
    CServiceLife::CUse ended;
    const CLockScope lock(m_lock);
    std::swap(ended, m_use);
}
} // namespace standin
