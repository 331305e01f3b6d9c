#include "standin/service/ConnectServer.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/proxy/WmiStandin.h"
#include "standin/service/Service.h"

namespace standin
{
namespace
{
std::wstring Text(BSTR text)
{
    return {text ? text : L"", SysStringLen(text)};
}

class CConnectServer : public CComObject<IWmiStandin>
{
  public:
    explicit CConnectServer(CService& service) noexcept : m_service(service) {}

    STDMETHODIMP Connect(BSTR nameSpace, BSTR locale, ULONG clientProcess, ULONG* serviceProcess, REFIID riid,
                         IUnknown** connection) override
    {
        return AtComBoundary(
            [&]() -> HRESULT
            {
                const CServiceLife::CUse use(m_service.Life());
                if (!serviceProcess || !connection)
                    return E_POINTER;
                *serviceProcess = GetCurrentProcessId();
                *connection = nullptr;
                // A client whose process cannot be watched is served all the same.
                std::shared_ptr<const CHandle> watched;
                if (CHandle process(OpenProcess(SYNCHRONIZE, FALSE, clientProcess)); process)
                    watched = std::make_shared<const CHandle>(std::move(process));
                const ComPtr<IWbemServices> services =
                    m_service.Connect(Text(nameSpace), Text(locale), std::move(watched));
                if (!services)
                    return wmi::InvalidNamespace;
                return services->QueryInterface(riid, reinterpret_cast<void**>(connection));
            });
    }

  private:
    CService& m_service;
};

} // namespace

ComPtr<IWmiStandin> MakeConnectServer(CService& service)
{
    return MakeCom<CConnectServer>(service);
}
} // namespace standin
