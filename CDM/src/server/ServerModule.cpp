#include "CDM/src/server/ServerModule.h"

#include "CDM/src/ProviderImp.h"
#include "CDM/src/server/ProviderFactory.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/wine/AtlLeftovers.h"

#include <atomic>
#include <oleauto.h>
#include <optional>

namespace
{
// The numbers of the registration scripts among the resources.
constexpr UINT kModuleScript = 100;
constexpr UINT kClassScript = 101;

// The version of the module record, for module functions that look at it.
constexpr DWORD kRecordVersion = 0x0300;
constexpr GUID kRecordVersionId = {
    0xB62F5910, 0x6528, 0x11D1, {0x96, 0x11, 0x00, 0x00, 0xF8, 0x1E, 0x0D, 0x0D}};

const wchar_t* WINAPI NoDescription() noexcept
{
    return nullptr;
}

const void* NoCategories() noexcept
{
    return nullptr;
}

void WINAPI NothingToDo(BOOL) noexcept {}

std::atomic<long> g_providers{0};

struct CProviderCount
{
    CProviderCount() noexcept { ++g_providers; }
    ~CProviderCount() { --g_providers; }
};

// The count is the first base, so that it ends when everything else of the object has.
class CServedProvider final : private CProviderCount, public CProviderImp
{
  public:
    using CProviderImp::CProviderImp;
};

HRESULT WINAPI MakeProvider(void*, REFIID riid, void** out)
{
    return CServerModule::Instance().CreateProvider(riid, out);
}

HRESULT WINAPI GetProviderClassObject(void* creator, REFIID riid, void** out)
{
    return AtComBoundary(
        [&]
        {
            CServerModule& module = CServerModule::Instance();
            return MakeCom<CProviderFactory>(module, reinterpret_cast<atl::Creator*>(creator))
                ->QueryInterface(riid, out);
        });
}
} // namespace

atl::ObjectEntry CServerModule::s_objects[] = {
    {&kClsidProviderImp, &CServerModule::UpdateClassRegistry, &GetProviderClassObject, &MakeProvider, nullptr,
     0, &NoDescription, &NoCategories, &NothingToDo},
    {},
};

CServerModule& CServerModule::Instance() noexcept
{
    static CServerModule module;
    return module;
}

HRESULT CServerModule::Init(HINSTANCE instance) noexcept
{
    m_monitor.Open();
    m_record.size = sizeof m_record;
    m_record.buildVersion = kRecordVersion;
    m_record.version = &kRecordVersionId;
    const HRESULT hr = AtlModuleInit(&m_record, s_objects, instance);
    if (SUCCEEDED(hr))
        m_typeLibrary = kLibidDrevok;
    return hr;
}

void CServerModule::Term() noexcept
{
    AtlModuleTerm(&m_record);
}

HRESULT CServerModule::RegisterServer() noexcept
{
    RunScript(kModuleScript, TRUE);
    return AtlModuleRegisterServer(&m_record, TRUE, nullptr);
}

HRESULT CServerModule::UnregisterServer() noexcept
{
    RunScript(kModuleScript, FALSE);
    const HRESULT hr = AtlModuleUnregisterServerEx(&m_record, TRUE, nullptr);
    FinishUnregisteringUnderWine(m_record, kClassScript, m_typeLibrary);
    return hr;
}

HRESULT CServerModule::RegisterClassObjects(DWORD context, DWORD flags) noexcept
{
    return AtlModuleRegisterClassObjects(&m_record, context, flags);
}

void CServerModule::RevokeClassObjects() noexcept
{
    AtlModuleRevokeClassObjects(&m_record);
    FinishRevokingUnderWine(s_objects);
}

HRESULT CServerModule::CreateProvider(REFIID riid, void** out)
{
    // Held from the admission on, so that the server cannot be found idle before the object has a lock.
    std::optional<CServerLockHold> admitted;
    CHostPaths paths;
    const auto enter = [&]
    {
        admitted.emplace(*this);
        paths = m_paths;
    };
    if (!m_monitor.Admit(enter))
        return CO_E_SERVER_STOPPING;
    return MakeCom<CServedProvider>(paths, *this)->QueryInterface(riid, out);
}

LONG CServerModule::Lock() noexcept
{
    return InterlockedIncrement(&m_record.lockCount);
}

LONG CServerModule::Unlock() noexcept
{
    const LONG left = InterlockedDecrement(&m_record.lockCount);
    if (left == 0)
        m_monitor.Signal();
    return left;
}

long CServerModule::Providers() noexcept
{
    return g_providers;
}

HRESULT CServerModule::RunScript(UINT resource, BOOL registering) noexcept
{
    return AtlModuleUpdateRegistryFromResourceD(&m_record, MAKEINTRESOURCEW(resource), registering, nullptr,
                                                nullptr);
}

HRESULT WINAPI CServerModule::UpdateClassRegistry(BOOL registering) noexcept
{
    return Instance().RunScript(kClassScript, registering);
}
