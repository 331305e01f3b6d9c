// A management object that passes every call to a real one, unless a plan says that the call fails. What is
// spawned from it, its method signatures and qualifier sets follow the same plan.
#pragma once

#include "tests/support/Allocations.h"
#include "tests/support/CallPlan.h"

#include "Common/src/com/ComObject.h"

#include <wbemcli.h>

class CFailingQualifiers final : public CComObject<IWbemQualifierSet>
{
  public:
    CFailingQualifiers(ComPtr<IWbemQualifierSet> inner, CallPlan plan)
        : m_inner(std::move(inner)), m_plan(std::move(plan))
    {
    }

    STDMETHODIMP Get(LPCWSTR name, LONG flags, VARIANT* value, LONG* flavor) override
    {
        const CSparedAllocations spared;
        const HRESULT planned = m_plan->Next(CCallPlan::Call::GetQualifier);
        return planned == S_OK ? m_inner->Get(name, flags, value, flavor) : planned;
    }
    STDMETHODIMP Put(LPCWSTR name, VARIANT* value, LONG flavor) override
    {
        return m_inner->Put(name, value, flavor);
    }
    STDMETHODIMP Delete(LPCWSTR name) override { return m_inner->Delete(name); }
    STDMETHODIMP GetNames(LONG flags, SAFEARRAY** names) override { return m_inner->GetNames(flags, names); }
    STDMETHODIMP BeginEnumeration(LONG flags) override { return m_inner->BeginEnumeration(flags); }
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value, LONG* flavor) override
    {
        return m_inner->Next(flags, name, value, flavor);
    }
    STDMETHODIMP EndEnumeration() override { return m_inner->EndEnumeration(); }

  private:
    ComPtr<IWbemQualifierSet> m_inner;
    CallPlan m_plan;
};

class CFailingClassObject final : public CComObject<IWbemClassObject>
{
  public:
    using Call = CCallPlan::Call;

    CFailingClassObject(ComPtr<IWbemClassObject> inner, CallPlan plan)
        : m_inner(std::move(inner)), m_plan(std::move(plan))
    {
    }

    STDMETHODIMP GetQualifierSet(IWbemQualifierSet** set) override { return m_inner->GetQualifierSet(set); }
    STDMETHODIMP Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) override
    {
        const CSparedAllocations spared;
        if (const HRESULT planned = m_plan->Next(Call::Get); planned != S_OK)
            return planned;
        return m_plan->Answered(name, value) ? S_OK : m_inner->Get(name, flags, value, type, flavor);
    }
    STDMETHODIMP Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type) override
    {
        const CSparedAllocations spared;
        m_plan->Record(name, flags, *value, type);
        const HRESULT planned = m_plan->Next(Call::Put);
        return planned == S_OK ? m_inner->Put(name, flags, value, type) : planned;
    }
    STDMETHODIMP Delete(LPCWSTR name) override { return m_inner->Delete(name); }
    STDMETHODIMP GetNames(LPCWSTR qualifier, LONG flags, VARIANT* value, SAFEARRAY** names) override
    {
        const CSparedAllocations spared;
        if (const HRESULT planned = m_plan->Next(Call::GetNames); planned != S_OK)
            return planned;
        const HRESULT hr = m_inner->GetNames(qualifier, flags, value, names);
        if (m_plan->AfterNames)
            m_plan->AfterNames(*names);
        return hr;
    }
    STDMETHODIMP BeginEnumeration(LONG flags) override { return m_inner->BeginEnumeration(flags); }
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value, CIMTYPE* type, LONG* flavor) override
    {
        return m_inner->Next(flags, name, value, type, flavor);
    }
    STDMETHODIMP EndEnumeration() override { return m_inner->EndEnumeration(); }
    STDMETHODIMP GetPropertyQualifierSet(LPCWSTR property, IWbemQualifierSet** set) override
    {
        const CSparedAllocations spared;
        if (const HRESULT planned = m_plan->Next(Call::GetPropertyQualifierSet); planned != S_OK)
            return planned;
        ComPtr<IWbemQualifierSet> inner;
        const HRESULT hr = m_inner->GetPropertyQualifierSet(property, inner.Put());
        *set = inner ? MakeCom<CFailingQualifiers>(inner, m_plan).Detach() : nullptr;
        return hr;
    }
    STDMETHODIMP Clone(IWbemClassObject** copy) override
    {
        return Follow(copy, [&](IWbemClassObject** out) { return m_inner->Clone(out); });
    }
    STDMETHODIMP GetObjectText(LONG flags, BSTR* text) override
    {
        return m_inner->GetObjectText(flags, text);
    }
    STDMETHODIMP SpawnDerivedClass(LONG flags, IWbemClassObject** derived) override
    {
        return Follow(derived,
                      [&](IWbemClassObject** out) { return m_inner->SpawnDerivedClass(flags, out); });
    }
    STDMETHODIMP SpawnInstance(LONG flags, IWbemClassObject** instance) override
    {
        const CSparedAllocations spared;
        if (const HRESULT planned = m_plan->Next(Call::SpawnInstance); planned != S_OK)
            return planned;
        return Follow(instance, [&](IWbemClassObject** out) { return m_inner->SpawnInstance(flags, out); });
    }
    STDMETHODIMP CompareTo(LONG flags, IWbemClassObject* other) override
    {
        return m_inner->CompareTo(flags, other);
    }
    STDMETHODIMP GetPropertyOrigin(LPCWSTR name, BSTR* className) override
    {
        return m_inner->GetPropertyOrigin(name, className);
    }
    STDMETHODIMP InheritsFrom(LPCWSTR ancestor) override { return m_inner->InheritsFrom(ancestor); }
    STDMETHODIMP GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in, IWbemClassObject** out) override
    {
        const CSparedAllocations spared;
        if (const HRESULT planned = m_plan->Next(Call::GetMethod); planned != S_OK)
            return planned;
        if (!out)
            return m_inner->GetMethod(name, flags, in, nullptr);
        return Follow(out, [&](IWbemClassObject** o) { return m_inner->GetMethod(name, flags, in, o); });
    }
    STDMETHODIMP PutMethod(LPCWSTR name, LONG flags, IWbemClassObject* in, IWbemClassObject* out) override
    {
        return m_inner->PutMethod(name, flags, in, out);
    }
    STDMETHODIMP DeleteMethod(LPCWSTR name) override { return m_inner->DeleteMethod(name); }
    STDMETHODIMP BeginMethodEnumeration(LONG flags) override
    {
        return m_inner->BeginMethodEnumeration(flags);
    }
    STDMETHODIMP NextMethod(LONG flags, BSTR* name, IWbemClassObject** in, IWbemClassObject** out) override
    {
        return m_inner->NextMethod(flags, name, in, out);
    }
    STDMETHODIMP EndMethodEnumeration() override { return m_inner->EndMethodEnumeration(); }
    STDMETHODIMP GetMethodQualifierSet(LPCWSTR method, IWbemQualifierSet** set) override
    {
        return m_inner->GetMethodQualifierSet(method, set);
    }
    STDMETHODIMP GetMethodOrigin(LPCWSTR method, BSTR* className) override
    {
        return m_inner->GetMethodOrigin(method, className);
    }

  private:
    // What the real object gives, under the same plan.
    template <class Ask>
    HRESULT Follow(IWbemClassObject** out, Ask&& ask)
    {
        ComPtr<IWbemClassObject> inner;
        const HRESULT hr = ask(inner.Put());
        *out = inner ? MakeCom<CFailingClassObject>(inner, m_plan).Detach() : nullptr;
        return hr;
    }

    ComPtr<IWbemClassObject> m_inner;
    CallPlan m_plan;
};
