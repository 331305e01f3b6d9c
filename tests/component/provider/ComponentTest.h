// The provider object with all its handlers and a fake agent, asked as the management service asks it.
#pragma once

#include "Common/src/com/SafeArray.h"
#include "tests/support/InProcessProvider.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>

using Instance = ComPtr<IWbemClassObject>;
using Instances = std::vector<Instance>;

class ComponentTest : public testing::Test
{
  protected:
    // Two adapters: A with two ordinary tests, B with one and with the sender.
    explicit ComponentTest(const CEngineSeams& seams = {}) : m_host(ServedHandlers(), seams)
    {
        m_host.Agent->AddAdapter(L"A", {1, 2});
        m_host.Agent->AddAdapter(L"B", {1, 9});
    }
    // With an agent of the test's own.
    ComponentTest(IUnknown* agent, const CEngineSeams& seams) : m_host(agent, seams) {}

    void Start() { ASSERT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED); }
    // As after an end of the process and its next start.
    void Restart()
    {
        m_host.Restart();
        Start();
    }

    struct CAnswer
    {
        HRESULT Returned = E_UNEXPECTED;
        std::optional<HRESULT> Status; // none: the sink heard nothing
        Instances Objects;
        Instance StatusObject;
    };

    CAnswer Enumerate(const wchar_t* className)
    {
        const CBstr name(className);
        return Ask([&](IWbemObjectSink* sink)
                   { return m_host.Provider->CreateInstanceEnumAsync(name.Get(), 0, nullptr, sink); });
    }
    CAnswer Get(const std::wstring& path)
    {
        const CBstr text(path.c_str());
        return Ask([&](IWbemObjectSink* sink)
                   { return m_host.Provider->GetObjectAsync(text.Get(), 0, nullptr, sink); });
    }
    CAnswer Put(const Instance& instance)
    {
        return Ask(
            [&](IWbemObjectSink* sink) {
                return m_host.Provider->PutInstanceAsync(instance.Get(), WBEM_FLAG_UPDATE_ONLY, nullptr,
                                                         sink);
            });
    }
    // Invokes a method of a test; null parameters stay unset.
    CAnswer Invoke(const std::wstring& test, const wchar_t* method,
                   const std::map<std::wstring, std::wstring>& in)
    {
        const Instance definition = ServedSchema().GetClass(kServedNamespace, L"Tolva_DiagTest");
        Instance signature, inParams;
        EXPECT_EQ(definition->GetMethod(method, 0, signature.Put(), nullptr), S_OK);
        EXPECT_EQ(signature->SpawnInstance(0, inParams.Put()), S_OK);
        for (const auto& [name, text] : in)
        {
            CVariant value = CVariant::FromText(text.c_str());
            EXPECT_EQ(inParams->Put(name.c_str(), 0, &value, 0), S_OK);
        }
        const CBstr path(test.c_str());
        const CBstr name(method);
        return Ask(
            [&](IWbemObjectSink* sink) {
                return m_host.Provider->ExecMethodAsync(path.Get(), name.Get(), 0, nullptr, inParams.Get(),
                                                        sink);
            });
    }
    CAnswer RunTest(const wchar_t* name)
    {
        return Invoke(TestPath(name), L"RunTest", {{L"SystemElement", AdapterPath(wcschr(name, L'@') + 1)}});
    }

    static std::wstring TestPath(const std::wstring& name) { return L"Tolva_DiagTest.Name=" + Quoted(name); }
    static std::wstring AdapterPath(const std::wstring& key)
    {
        return L"Tolva_EthernetAdapter.DeviceID=" + Quoted(key) +
               L",CreationClassName=\"Tolva_EthernetAdapter\",SystemCreationClassName=\"Win32_"
               L"ComputerSystem\","
               L"SystemName=\"X\"";
    }
    static std::wstring ResultPath(const std::wstring& name)
    {
        return L"Tolva_DiagResult.DiagnosticName=" + Quoted(name);
    }
    static std::wstring SettingPath(const std::wstring& name)
    {
        return L"Tolva_DiagSetting.SettingID=" + Quoted(name);
    }
    // A value as it stands in a path.
    static std::wstring Quoted(const std::wstring& text)
    {
        std::wstring quoted = L"\"";
        for (const wchar_t c : text)
        {
            if (c == L'"' || c == L'\\')
                quoted += L'\\';
            quoted += c;
        }
        return quoted + L"\"";
    }

    static CVariant Read(const Instance& object, const wchar_t* property)
    {
        CVariant value;
        EXPECT_EQ(object->Get(property, 0, value.Put(), nullptr, nullptr), S_OK) << "property";
        return value;
    }
    static std::wstring Text(const Instance& object, const wchar_t* property)
    {
        const CVariant value = Read(object, property);
        return value.vt == VT_BSTR ? std::wstring(value.bstrVal) : std::wstring(L"<no text>");
    }
    static LONG Number(const Instance& object, const wchar_t* property)
    {
        const CVariant value = Read(object, property);
        return value.vt == VT_I4     ? value.lVal
               : value.vt == VT_UI1  ? value.bVal
               : value.vt == VT_BOOL ? value.boolVal
                                     : -99;
    }
    static std::vector<std::wstring> Texts(const Instance& object, const wchar_t* property)
    {
        const CVariant value = Read(object, property);
        const CSafeArrayView<BSTR> view(value.vt == (VT_ARRAY | VT_BSTR) ? value.parray : nullptr, VT_BSTR);
        EXPECT_TRUE(view.Valid()) << "array of texts";
        return {view.Items().begin(), view.Items().end()};
    }
    // The values of one property of all instances.
    static std::vector<std::wstring> Column(const CAnswer& answer, const wchar_t* property)
    {
        std::vector<std::wstring> texts;
        for (const Instance& object : answer.Objects)
            texts.push_back(Text(object, property));
        return texts;
    }

    // The sink of each request, and the request itself.
    virtual ComPtr<CFakeSink> MakeSink() { return MakeCom<CFakeSink>(); }
    virtual HRESULT Make(const std::function<HRESULT()>& request) { return request(); }

    template <class Request>
    CAnswer Ask(Request&& request)
    {
        const auto sink = MakeSink();
        CAnswer answer;
        answer.Returned = Make([&] { return request(sink.Get()); });
        answer.Objects = sink->Objects();
        for (const CFakeSink::CStatus& status : sink->Statuses())
        {
            EXPECT_FALSE(answer.Status) << "one status for one request";
            answer.Status = status.Result;
            answer.StatusObject = status.Object;
        }
        return answer;
    }

    CInProcessProvider m_host;
};
