// The object that the management service creates in the provider's process: initialised once, then asked for
// objects, enumerations, methods and updates, by several threads at once. Each request runs under its
// client's identity, is routed by class name to one handler, and ends with one status on its response sink;
// one that finds no handler gets none. Holds one lock on the server until its destruction begins.
#pragma once

#include "CDM/src/ProviderBase.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebImpResourceMgr.h"
#include "CDM/src/classes/WomClassHandler.h"
#include "CDM/src/engine/DiagMgr.h"
#include "Common/src/VormAgentMgr.h"
#include "Common/src/WomSecurity.h"
#include "Common/src/com/CriticalSection.h"

#include <functional>
#include <list>
#include <memory>
#include <span>

struct CRequestTexts;
struct CAnswer;

// How one handler comes into being, and the trace line for when it does not.
struct CHandlerRow
{
    std::unique_ptr<CWomClassHandler> (*create)(); // null if memory ran out
    const char* failure;
};

// The seven handlers, in their order of creation.
std::span<const CHandlerRow> ServedHandlers() noexcept;

class CProviderImp : public CUnsupportedServices
{
  public:
    // `server` outlives the object. Tests put handlers of their own among the served ones, and replace what
    // the engine takes from the system.
    CProviderImp(const CHostPaths& paths, IServerLock& server,
                 std::span<const CHandlerRow> handlers = ServedHandlers(), const CEngineSeams& seams = {});

    // Always WBEM_S_NO_ERROR: the init sink learns the outcome. Only the first call does anything.
    STDMETHODIMP Initialize(wchar_t* user, long flags, wchar_t* nameSpace, wchar_t* locale,
                            IWbemServices* services, IWbemContext* context,
                            IWbemProviderInitSink* sink) override;

    STDMETHODIMP GetObjectAsync(const BSTR path, long flags, IWbemContext* context,
                                IWbemObjectSink* sink) override;
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR className, long flags, IWbemContext* context,
                                         IWbemObjectSink* sink) override;
    STDMETHODIMP PutInstanceAsync(IWbemClassObject* instance, long flags, IWbemContext* context,
                                  IWbemObjectSink* sink) override;
    STDMETHODIMP ExecMethodAsync(const BSTR path, const BSTR method, long flags, IWbemContext* context,
                                 IWbemClassObject* inParams, IWbemObjectSink* sink) override;

  protected:
    ~CProviderImp() override;

  private:
    // What initialisation leaves for the requests.
    struct CState
    {
        ComPtr<IWbemServices> Namespace; // set by the first Initialize, whatever becomes of it
        LCID DefaultLocale = 0;
        bool CimKeyMode = true;
        bool HandlersReady = false; // all seven, except any for which memory ran out
    };
    using Body = std::function<CAnswer(CWomContext&)>;

    HRESULT InitializeOnce(LCID locale, IWbemServices* services, IWbemContext* context);
    HRESULT ClassesInit(LCID locale);
    void LoadResources(LCID locale);
    static bool CheckForMicrosoftKeys(IWbemServices* services, IWbemContext* context);

    CState State() const;
    CWomClassHandler* FindClass(const wchar_t* className) const;
    HRESULT Serve(const CRequestTexts& texts, long flags, IWbemContext* caller, IWbemObjectSink* sink,
                  const Body& body);
    CAnswer AnswerGetObject(const BSTR path, CWomContext& context, IWbemObjectSink* sink);
    CAnswer AnswerCreateInstanceEnum(const BSTR className, CWomContext& context, IWbemObjectSink* sink);
    CAnswer AnswerPutInstance(IWbemClassObject* instance, long flags, CWomContext& context,
                              IWbemObjectSink* sink);
    CAnswer AnswerExecMethod(const BSTR path, const BSTR method, IWbemClassObject* inParams,
                             CWomContext& context, IWbemObjectSink* sink);

    CWomSecurity m_security;
    CZebImpResourceMgr m_resources;
    CVormAgentMgr m_agents;
    CDiagMgr m_manager;
    std::list<std::unique_ptr<CWomClassHandler>> m_handlers;
    CWomClassRouter m_router; // written before HandlersReady is set, read afterwards
    CCriticalSection m_initialising;
    mutable CCriticalSection m_stateSection;
    CState m_state;
    const std::span<const CHandlerRow> m_rows;
    CServerLockHold m_lock;
};
