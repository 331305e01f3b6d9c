// What every handler of a management class implements, and the router that finds the handler of a class.
#pragma once

#include "CDM/src/engine/naming/InstancePath.h"
#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"
#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <map>
#include <string>
#include <wbemcli.h>

// The platform header makes a macro of this name.
#undef GetClassName

class CDiagMgr;

// The provider owns the handlers and calls them from many request threads at once: a handler keeps no state
// of its own besides the pointer to the diagnostics manager, which outlives it. A handler delivers instances
// through the sink itself and never calls SetStatus; the provider ends each request. The sink is a reference
// of the handler's own, given up when the call ends. Failure is the HRESULT, or an exception that the
// provider's barrier turns into one.
class CWomClassHandler
{
  public:
    virtual ~CWomClassHandler() = default;

    // The management class served; a constant.
    virtual const wchar_t* GetClassName() const noexcept = 0;
    // Indicates the one instance that the path names.
    virtual HRESULT GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                                   ComPtr<IWbemObjectSink> sink) = 0;
    // Indicates every instance of the class.
    virtual HRESULT CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink) = 0;
    // Stores an instance; `path` receives its object path if the handler gives one.
    virtual HRESULT PutInstanceAsync(CWomClassObject& instance, CWomContext& context, CBstr& path,
                                     ComPtr<IWbemObjectSink> sink);
    // Runs a method; the handler fills `out`, an instance of the method's out-signature.
    virtual HRESULT ExecMethodAsync(const CParsedObjectPath& path, const wchar_t* method,
                                    CWomContext& context, CWomClassObject& in, CWomClassObject& out,
                                    ComPtr<IWbemObjectSink> sink);
    // For handlers that want a query entry; answers with the whole class.
    virtual HRESULT ExecQueryAsync(const wchar_t* query, CWomContext& context, ComPtr<IWbemObjectSink> sink);

    void SetDiagMgr(CDiagMgr* manager) noexcept { m_manager = manager; }

  protected:
    CDiagMgr& DiagMgr() const noexcept { return *m_manager; }

  private:
    CDiagMgr* m_manager = nullptr;
};

// Finds a handler by the name of its class, without regard to case by the rules of the ANSI code page. Filled
// while the provider initialises, read from any thread afterwards. Owns no handler.
class CWomClassRouter
{
  public:
    // Registers the handler under the name that it gives; the first of a name stays.
    void AddClass(CWomClassHandler* handler);
    // Null if no handler serves the class or the name is null.
    CWomClassHandler* FindClass(const wchar_t* className) const;
    void Clear() noexcept { m_handlers.clear(); }

  private:
    std::map<std::wstring, CWomClassHandler*> m_handlers;
};
