// A client that can be impersonated: stands in for what COM gives to a thread that serves a call.
#pragma once

#include "Common/src/com/ComObject.h"

#include <functional>
#include <objbase.h>

class CFakeCallContext final : public CComObject<IServerSecurity>
{
  public:
    int Impersonations = 0;
    int Reverts = 0;
    bool Running = false; // as the client
    HRESULT Answer = S_OK;
    std::function<void()> OnImpersonate;
    std::function<void()> OnRevert;

    STDMETHODIMP QueryBlanket(DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**, DWORD*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ImpersonateClient() override
    {
        ++Impersonations;
        if (OnImpersonate)
            OnImpersonate();
        Running = Running || SUCCEEDED(Answer);
        return Answer;
    }
    STDMETHODIMP RevertToSelf() override
    {
        ++Reverts;
        if (OnRevert)
            OnRevert();
        Running = false;
        return S_OK;
    }
    STDMETHODIMP_(BOOL) IsImpersonating() override { return Running; }
};

// Makes it the calling thread's call context while the scope lives.
class CCallContextScope
{
  public:
    explicit CCallContextScope(CFakeCallContext& context) { CoSwitchCallContext(&context, m_outer.Put()); }
    CCallContextScope(const CCallContextScope&) = delete;
    CCallContextScope& operator=(const CCallContextScope&) = delete;
    ~CCallContextScope()
    {
        IUnknown* inner = nullptr;
        CoSwitchCallContext(m_outer.Get(), &inner);
    }

  private:
    ComPtr<IUnknown> m_outer;
};
