// Which calls of a test fail: the n-th of a kind, with a code. One plan is shared by all objects that take
// part in a test, so that "the third Put" means the third of the whole request. Any thread may ask it.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Variant.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>
#include <wbemcli.h>

class CCallPlan
{
  public:
    enum class Call
    {
        Get,
        Put,
        GetNames,
        GetPropertyQualifierSet,
        GetQualifier,
        SpawnInstance,
        GetMethod,
    };

    // The n-th call from now on (counted from 1) answers `code`. A plan has one failure at a time.
    void Fail(Call call, int n, HRESULT code)
    {
        CLockScope lock(m_section);
        m_call = call;
        m_failIn = n;
        m_code = code;
        m_failed = false;
    }
    // Whether the planned failure has come true.
    bool Failed()
    {
        CLockScope lock(m_section);
        return m_failed;
    }
    // From now on every Get of that property answers this value in place of the object's own.
    void Answer(const wchar_t* property, CVariant value)
    {
        CLockScope lock(m_section);
        m_answers.insert_or_assign(property, std::move(value));
    }

    // What the last Put was given, and the names of all so far.
    struct CPut
    {
        std::wstring Name;
        long Flags;
        CVariant Value;
        CIMTYPE Type;
    };
    const CPut& LastPut() const { return m_lastPut; }
    const std::vector<std::wstring>& Puts() const { return m_puts; }
    void ForgetPuts()
    {
        CLockScope lock(m_section);
        m_lastPut = {};
        m_puts.clear();
    }

    // Called when an object has given the names of its properties.
    std::function<void(SAFEARRAY* names)> AfterNames;

    // For the objects: S_OK lets the call pass.
    HRESULT Next(Call call)
    {
        CLockScope lock(m_section);
        ++m_counts[call];
        if (call != m_call || m_failIn == 0 || --m_failIn > 0)
            return S_OK;
        m_failed = true;
        return m_code;
    }
    bool Answered(const wchar_t* property, VARIANT* value)
    {
        CLockScope lock(m_section);
        const auto found = m_answers.find(property ? property : L"");
        return found != m_answers.end() && SUCCEEDED(VariantCopy(value, &found->second));
    }
    void Record(const wchar_t* name, long flags, VARIANT& value, CIMTYPE type)
    {
        CLockScope lock(m_section);
        m_lastPut = {name ? name : L"", flags, CVariant(), type};
        VariantCopy(&m_lastPut.Value, &value);
        m_puts.push_back(m_lastPut.Name);
    }
    // How many calls of the kind there were.
    int Count(Call call)
    {
        CLockScope lock(m_section);
        return m_counts[call];
    }

  private:
    CCriticalSection m_section;
    std::map<Call, int> m_counts;
    std::map<std::wstring, CVariant> m_answers;
    CPut m_lastPut{};
    std::vector<std::wstring> m_puts;
    Call m_call = Call::Get;
    int m_failIn = 0;
    HRESULT m_code = S_OK;
    bool m_failed = false;
};

using CallPlan = std::shared_ptr<CCallPlan>;
