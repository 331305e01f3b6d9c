#include "standin/service/ProviderNamespace.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/mof/Repository.h"
#include "standin/proxy/HeldReference.h"
#include "standin/proxy/UnsupportedServices.h"

namespace standin
{
namespace
{
class CProviderNamespace : public CUnsupportedServices<>
{
  public:
    CProviderNamespace(const CRepository& repository, std::wstring nameSpace) noexcept
        : m_repository(repository), m_nameSpace(std::move(nameSpace))
    {
    }

    STDMETHODIMP GetObject(const BSTR path, long, IWbemContext*, IWbemClassObject** object,
                           IWbemCallResult**) override
    {
        return AtComBoundary(
            [&]() -> HRESULT
            {
                if (!path || !object)
                    return wmi::InvalidParameter;
                *object = m_repository.GetClass(m_nameSpace, path).Detach();
                return *object ? wmi::NoError : wmi::NotFound;
            });
    }

  private:
    const CRepository& m_repository;
    const std::wstring m_nameSpace;
};
} // namespace

ComPtr<IWbemServices> MakeProviderNamespace(const CRepository& repository, const std::wstring& nameSpace)
{
    return MakeCom<CHeldReference>(MakeCom<CProviderNamespace>(repository, nameSpace));
}
} // namespace standin
