#include "CDM/src/ProviderImp.h"
#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/classes/Associations.h"
#include "CDM/src/classes/ResultHandler.h"
#include "CDM/src/classes/SettingHandler.h"
#include "CDM/src/classes/TestHandler.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"
#include "agent/VorlIds.h"

namespace
{
// The agent is asked for its texts in English.
constexpr ULONG kAgentLanguage = 1033;

template <class Handler>
std::unique_ptr<CWomClassHandler> Create()
{
    return std::unique_ptr<CWomClassHandler>(new (std::nothrow) Handler());
}

constexpr CHandlerRow kHandlers[] = {
    {&Create<CTolva_DiagTest>, "CProviderImp::ClassesInit:Failed to create CTolva_DiagTest"},
    {&Create<CTolva_DiagSetting>, "CProviderImp::ClassesInit:Failed to create Tolva_DiagSetting"}, // sic
    {&Create<CTolva_DiagResult>, "CProviderImp::ClassesInit:Failed to create CTolva_DiagResult"},
    {&Create<CTolva_DiagTestMSEAssoc>, "CProviderImp::ClassesInit:Failed to create CTolva_DiagTestMSEAssoc"},
    {&Create<CTolva_DiagResultMSEAssoc>,
     "CProviderImp::ClassesInit:Failed to create CTolva_DiagResultMSEAssoc"},
    {&Create<CTolva_DiagResultTestAssoc>,
     "CProviderImp::ClassesInit:Failed to create CTolva_DiagResultTestAssoc"},
    {&Create<CTolva_DiagSettingTestAssoc>,
     "CProviderImp::ClassesInit:Failed to create CTolva_DiagSettingTestAssoc"},
};

// There are always libraries for this language.
constexpr LCID kEnglish = 0x409;

struct CResourceRow
{
    const char* baseName;
    const char* failure;
};

constexpr CResourceRow kResources[] = {
    {"_NWR", "CProviderImp::Initialize: LoadResourceDll1 failed hr = <%x>"},
    {"_8023", "CProviderImp::Initialize: LoadResourceDll1 failed hr = <%x>"}, // sic
    {"Diag", "CProviderImp::Initialize: LoadResourceDll2 failed hr = <%x>"},
};

std::string Narrow(const wchar_t* text)
{
    return text ? NarrowText(text) : std::string();
}
} // namespace

std::span<const CHandlerRow> ServedHandlers() noexcept
{
    return kHandlers;
}

CProviderImp::CProviderImp(const CHostPaths& paths, IServerLock& server,
                           std::span<const CHandlerRow> handlers, const CEngineSeams& seams)
    : m_manager(paths, seams), m_rows(handlers), m_lock(server)
{
}

CProviderImp::~CProviderImp()
{
    m_lock.Release();
    while (!m_handlers.empty())
        m_handlers.pop_front();
    m_state.Namespace.Reset();
    m_router.Clear();
    // The members end in reverse order: the diagnostics manager, which stores the results, then the agent.
}

STDMETHODIMP CProviderImp::Initialize(wchar_t* user, long, wchar_t*, wchar_t* locale, IWbemServices* services,
                                      IWbemContext* context, IWbemProviderInitSink* sink)
{
    const CZebTrace trace("CProviderImp::Initialize");
    m_security.OutputSecurityDebug();

    const HRESULT hr = AtComBoundary(
        [&]
        {
            ZebDebug().Write("Initialize user %s locale %s", Narrow(user).c_str(), Narrow(locale).c_str());
            const CLockScope oneAtATime(m_initialising);
            const LCID defaultLocale = GetSystemDefaultLCID();
            bool second = false;
            {
                const CLockScope lock(m_stateSection);
                m_state.DefaultLocale = defaultLocale;
                second = static_cast<bool>(m_state.Namespace);
                if (!second)
                    m_state.Namespace = services;
            }
            if (!second)
                return InitializeOnce(defaultLocale, services, context);
            ZebDebug().Write("Second call to CProviderImp::Initialize");
            return S_OK;
        });

    ZebDebug().Write(FAILED(hr) ? "Sending FAILED" : "Sending INITIALIZED");
    if (sink)
        sink->SetStatus(FAILED(hr) ? wmi::Failed : static_cast<HRESULT>(WBEM_S_INITIALIZED), 0);
    // Nothing was impersonated; it is done for its lines, which show support the identity of the start.
    m_security.RevertToSelf();
    return wmi::NoError;
}

HRESULT CProviderImp::InitializeOnce(LCID locale, IWbemServices* services, IWbemContext* context)
{
    if (!services)
        return TraceFailure(wmi::InvalidParameter, "CProviderImp::Initialize: no name space");
    const HRESULT hr = AtComBoundary([&] { return ClassesInit(locale); });
    // If it cannot be found out, the mode is the one of a schema without such a key.
    bool cimKeyMode = true;
    (void)AtComBoundary(
        [&]
        {
            cimKeyMode = CheckForMicrosoftKeys(services, context);
            return S_OK;
        });

    const CLockScope lock(m_stateSection);
    m_state.CimKeyMode = cimKeyMode;
    // All of them or none: after a failure, the handlers that were made before it serve no request.
    m_state.HandlersReady = SUCCEEDED(hr);
    return hr;
}

HRESULT CProviderImp::ClassesInit(LCID locale)
{
    CLSID agentClass;
    HRESULT hr = CLSIDFromString(kVorlClassId, &agentClass);
    if (Failed(hr, "CProviderImp::ClassesInit:CLSIDFromString failed hr = <%x>"))
        return E_FAIL;
    hr = m_agents.Initialize(kAgentLanguage, agentClass);
    if (Failed(hr, "CProviderImp::ClassesInit:Vorl initialize failed hr = <%x>"))
        return E_FAIL;
    hr = m_manager.Initialize(&m_agents);
    if (Failed(hr, "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <%x>"))
        return E_FAIL;

    for (const CHandlerRow& row : m_rows)
    {
        std::unique_ptr<CWomClassHandler> handler = row.create();
        if (!handler)
        {
            ZebDebug().Write(row.failure);
            continue;
        }
        handler->SetDiagMgr(&m_manager);
        m_handlers.push_back(std::move(handler));
    }
    for (const auto& handler : m_handlers)
        m_router.AddClass(handler.get());

    LoadResources(locale);
    return S_OK;
}

void CProviderImp::LoadResources(LCID locale)
{
    for (const CResourceRow& row : kResources)
    {
        HMODULE library = nullptr;
        Failed(m_resources.LoadResourceDll(locale, row.baseName, true, &library), row.failure);
        // If the system's language has no library, English stands in for it.
        if (!library)
            m_resources.LoadResourceDll(kEnglish, row.baseName, true);
    }
}

bool CProviderImp::CheckForMicrosoftKeys(IWbemServices* services, IWbemContext* context)
{
    const CBstr className(L"CIM_Service");
    ComPtr<IWbemClassObject> service;
    if (FAILED(services->GetObject(className.Get(), 0, context, service.Put(), nullptr)) || !service)
        return true;

    ComPtr<IWbemQualifierSet> qualifiers;
    const HRESULT hr = service->GetPropertyQualifierSet(L"SystemCreationClassName", qualifiers.Put());
    if (FAILED(hr) || !qualifiers)
    {
        ZebDebug().Write("CProviderImp::CheckForMicrosoftKeys:GetPropertyQualifierSet failed, hr = <%x>", hr);
        return true;
    }
    CVariant key;
    if (FAILED(qualifiers->Get(L"key", 0, key.Put(), nullptr)) || key.vt != VT_BOOL)
        return true;
    return key.boolVal == VARIANT_FALSE;
}
