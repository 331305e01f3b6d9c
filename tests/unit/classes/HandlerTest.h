// What the tests of the class handlers share: the shipped schema, a manager with two ordinary tests on
// adapter A and a sender/responder test on adapter B, a sink, and readers of what was indicated.
#pragma once

#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebImpResourceMgr.h"
#include "CDM/src/classes/WomClassHandler.h"
#include "Common/src/WomClassCache.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/FakeSink.h"
#include "tests/support/ServedSchema.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/classes/FakeDiagMgr.h"

#include <gtest/gtest.h>
#include <optional>
#include <set>

// Every text exists, "_8023 3501" and the like; some are long, some cannot be widened.
class CTestTexts final : public CZebImpResourceMgr
{
  public:
    std::set<UINT> NotWidened;
    std::map<UINT, std::wstring> Long;
    std::vector<UINT> Asked; // in order

    std::string GetString(LCID, UINT id, const char* baseName) override
    {
        return std::string(baseName) + " " + std::to_string(id);
    }
    CBstr GetStringBstr(LCID locale, UINT id, const char* baseName) override
    {
        Asked.push_back(id);
        if (NotWidened.contains(id))
            return {};
        if (const auto found = Long.find(id); found != Long.end())
            return CBstr(found->second.c_str());
        const std::string text = GetString(locale, id, baseName);
        return CBstr(std::wstring(text.begin(), text.end()).c_str());
    }
};

class HandlerTest : public testing::Test
{
  protected:
    HandlerTest()
    {
        AddTest(L"1@A", 1);
        AddTest(L"2@A", 2);
        AddTest(L"9@B", 9);
    }
    ~HandlerTest() override
    {
        m_context.reset();
        WomClassCache::Drop();
    }

    // A test with its setting and its result.
    void AddTest(const wchar_t* key, ULONG id)
    {
        const ULONG senderResponder = id == 9 || id == 10;
        CTestData& test = m_manager.Tests[key];
        test.TestID = id;
        test.Key = CBstr(key);
        test.NameStringID = 3500 + id;
        test.DescriptionStringID = 3600 + id;
        test.Characteristics = {2};
        test.SenderResponder = senderResponder;
        CSettingData& setting = m_manager.Settings[key];
        setting.Key = CBstr(key);
        setting.IsPackage = senderResponder;
        CResultData& result = m_manager.Results[key];
        result.ResultID = CBstr(key);
        result.DiagnosticCreationClassName = CBstr(L"Tolva_DiagTest");
        result.ExecutionID = CBstr(wcschr(key, L'@') + 1);
        result.DiagnosticNameStringID = 3500 + id;
        result.SenderResponder = senderResponder;
    }

    // The context of the next request; the keys are reduced where `cimKeyMode` is true.
    CWomContext& Context(bool cimKeyMode = true)
    {
        m_context.emplace(nullptr, 0x409, L"DREVOK_PROVIDER", L"Test", &m_texts, m_services.Get(), 0,
                          cimKeyMode);
        return *m_context;
    }
    static CParsedObjectPath Path(const wchar_t* text)
    {
        CParsedObjectPath path;
        EXPECT_EQ(ParseObjectPath(text, path), S_OK) << "the test's own path";
        return path;
    }
    template <class Handler>
    Handler& Prepared(Handler& handler)
    {
        handler.SetDiagMgr(&m_manager);
        return handler;
    }

    std::vector<ComPtr<IWbemClassObject>> Indicated() const { return m_sink->Objects(); }
    static CVariant Read(const ComPtr<IWbemClassObject>& object, const wchar_t* property)
    {
        CVariant value;
        EXPECT_EQ(object->Get(property, 0, value.Put(), nullptr, nullptr), S_OK) << "property";
        return value;
    }
    static std::wstring ReadText(const ComPtr<IWbemClassObject>& object, const wchar_t* property)
    {
        const CVariant value = Read(object, property);
        return value.vt == VT_BSTR ? std::wstring(value.bstrVal)
                                   : L"<type " + std::to_wstring(value.vt) + L">";
    }
    static std::vector<LONG> ReadLongs(const ComPtr<IWbemClassObject>& object, const wchar_t* property)
    {
        const CVariant value = Read(object, property);
        EXPECT_EQ(value.vt, VT_ARRAY | VT_I4) << "array type";
        const CSafeArrayView<LONG> view(value.vt & VT_ARRAY ? value.parray : nullptr, VT_I4);
        return {view.Items().begin(), view.Items().end()};
    }
    static std::vector<std::wstring> ReadTexts(const ComPtr<IWbemClassObject>& object,
                                               const wchar_t* property)
    {
        const CVariant value = Read(object, property);
        EXPECT_EQ(value.vt, VT_ARRAY | VT_BSTR) << "array type";
        const CSafeArrayView<BSTR> view(value.vt & VT_ARRAY ? value.parray : nullptr, VT_BSTR);
        return {view.Items().begin(), view.Items().end()};
    }
    static bool IsNull(const ComPtr<IWbemClassObject>& object, const wchar_t* property)
    {
        return Read(object, property).vt == VT_NULL;
    }

    CallPlan m_plan = std::make_shared<CCallPlan>();
    ComPtr<CFakeServices> m_services = MakeServedNamespace(m_plan);
    CTestTexts m_texts;
    CFakeDiagMgr m_manager;
    ComPtr<CFakeSink> m_sink = MakeCom<CFakeSink>();

  private:
    std::optional<CWomContext> m_context;
};
