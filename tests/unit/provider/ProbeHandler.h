// A handler whose operations are what a test says, served under a class name of the test's choice.
#pragma once

#include "CDM/src/ProviderImp.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

// What the probes of the running test do. Operations without a body answer S_OK.
struct CProbeScript
{
    std::wstring ClassName = L"Tolva_DiagTest";
    std::function<HRESULT(const CParsedObjectPath&, CWomContext&, IWbemObjectSink*)> GetObject;
    std::function<HRESULT(CWomContext&, IWbemObjectSink*)> Enumerate;
    std::function<HRESULT(CWomClassObject&, CWomContext&, CBstr&)> Put;
    std::function<HRESULT(const CParsedObjectPath&, const wchar_t*, CWomContext&, CWomClassObject&,
                          CWomClassObject&)>
        Method;
    std::function<void()> OnDestroyed;
};

class CProbeHandler final : public CWomClassHandler
{
  public:
    // Probes made from now on follow this script, which must outlive them.
    static void Use(const CProbeScript* script) { s_script = script; }
    static std::unique_ptr<CWomClassHandler> Create()
    {
        return s_script ? std::unique_ptr<CWomClassHandler>(new CProbeHandler(*s_script)) : nullptr;
    }

    ~CProbeHandler() override
    {
        if (m_script.OnDestroyed)
            m_script.OnDestroyed();
    }
    const wchar_t* GetClassName() const noexcept override { return m_script.ClassName.c_str(); }
    HRESULT GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                           ComPtr<IWbemObjectSink> sink) override
    {
        return m_script.GetObject ? m_script.GetObject(path, context, sink.Get()) : S_OK;
    }
    HRESULT CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink) override
    {
        return m_script.Enumerate ? m_script.Enumerate(context, sink.Get()) : S_OK;
    }
    HRESULT PutInstanceAsync(CWomClassObject& instance, CWomContext& context, CBstr& path,
                             ComPtr<IWbemObjectSink> sink) override
    {
        return m_script.Put ? m_script.Put(instance, context, path)
                            : CWomClassHandler::PutInstanceAsync(instance, context, path, std::move(sink));
    }
    HRESULT ExecMethodAsync(const CParsedObjectPath& path, const wchar_t* method, CWomContext& context,
                            CWomClassObject& in, CWomClassObject& out, ComPtr<IWbemObjectSink> sink) override
    {
        return m_script.Method
                   ? m_script.Method(path, method, context, in, out)
                   : CWomClassHandler::ExecMethodAsync(path, method, context, in, out, std::move(sink));
    }

  private:
    explicit CProbeHandler(const CProbeScript& script) : m_script(script) {}

    inline static const CProbeScript* s_script = nullptr;
    const CProbeScript& m_script;
};

inline constexpr CHandlerRow kProbeRows[] = {{&CProbeHandler::Create, "no probe"}};
