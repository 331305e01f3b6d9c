// What the tests of the test class's methods share: a caller that puts in-parameters together and reads what
// came out.
#pragma once

#include "CDM/src/classes/TestHandler.h"
#include "Common/src/com/Owned.h"
#include "tests/unit/classes/HandlerTest.h"

#include <algorithm>

using Calls = std::vector<std::wstring>;

inline constexpr wchar_t kAdapterA[] = L"Tolva_EthernetAdapter.DeviceID=\"A\"";
inline constexpr wchar_t kAdapterB[] = L"Tolva_EthernetAdapter.DeviceID=\"B\"";
inline constexpr wchar_t kAdapterBFull[] = L"Tolva_EthernetAdapter.DeviceID=\"B\",CreationClassName=\"C\","
                                           L"SystemCreationClassName=\"S\",SystemName=\"N\"";
inline constexpr wchar_t kOrdinary[] = L"Tolva_DiagTest.Name=\"1@A\"";
inline constexpr wchar_t kSender[] = L"Tolva_DiagTest.Name=\"9@B\"";

class MethodsTest : public HandlerTest
{
  protected:
    MethodsTest() { m_manager.Tests[L"9@B"].Event = m_event.Get(); }

    // The parameters of the next call; a null text is a null value.
    void In(const wchar_t* name, const wchar_t* value)
    {
        CVariant given = value ? CVariant::FromText(value) : CVariant::Null();
        m_in.insert_or_assign(name, std::move(given));
    }
    HRESULT Call(const wchar_t* method, const wchar_t* path, bool cimKeyMode = true, bool withIn = true)
    {
        // What the method is in the schema, so that its name may be given in any letter case.
        CWomContext& context = Context(cimKeyMode);
        const ComPtr<IWbemClassObject> definition = MakeCom<CFailingClassObject>(
            ServedSchema().GetClass(kServedNamespace, L"Tolva_DiagTest"), m_plan);
        ComPtr<IWbemClassObject> in, out;
        const HRESULT known = definition->GetMethod(method, 0, nullptr, out.Put());
        CWomClassObject inParams(&context), outParams(&context);
        inParams.SetThrowing(false);
        outParams.SetThrowing(false);
        if (known == S_OK)
        {
            ComPtr<IWbemClassObject> signature;
            definition->GetMethod(method, 0, signature.Put(), nullptr);
            EXPECT_EQ(signature->SpawnInstance(0, in.Put()), S_OK);
            for (auto& [name, value] : m_in)
                EXPECT_EQ(in->Put(name.c_str(), 0, &value, 0), S_OK);
            m_out.Reset();
            EXPECT_EQ(out->SpawnInstance(0, m_out.Put()), S_OK);
            if (m_fixedOut)
                m_out = m_fixedOut;
            outParams.Wrap(m_out.Get());
            if (withIn)
                inParams.Wrap(m_fixedIn ? m_fixedIn.Get() : in.Get());
        }
        return Prepared(m_handler).ExecMethodAsync(Path(path), method, context, inParams, outParams, m_sink);
    }
    std::wstring Result() { return ReadText(m_out, L"Result"); }
    // Out-parameters that have a place for everything that a method could set.
    void TakeAnyOutParameter()
    {
        auto definition = std::make_shared<standin::CClassDefinition>(L"__PARAMETERS");
        for (const wchar_t* name : {L"Result", L"ReturnValue", L"TestingStopped"})
        {
            standin::CPropertyDefinition property;
            property.Name = name;
            property.Type = wcscmp(name, L"Result") == 0        ? CIM_STRING
                            : wcscmp(name, L"ReturnValue") == 0 ? CIM_UINT32
                                                                : CIM_BOOLEAN;
            property.Default = CVariant::Null();
            definition->SetProperty(property);
        }
        m_fixedOut = standin::MakeInstance(definition);
    }
    // What a reader of the out-parameters sees: VT_NULL for one that was not set.
    VARTYPE OutType(const wchar_t* name) { return Read(m_out, name).vt; }

    CHandle m_event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::map<std::wstring, CVariant> m_in;
    ComPtr<IWbemClassObject> m_fixedIn;  // instead of the method's own in-parameters
    ComPtr<IWbemClassObject> m_fixedOut; // likewise
    ComPtr<IWbemClassObject> m_out;
    CTolva_DiagTest m_handler;
};

inline std::wstring ResultReference(const wchar_t* key, const wchar_t* adapter)
{
    return std::wstring(
               L"Tolva_DiagResult.DiagnosticCreationClassName=\"Tolva_DiagTest\",DiagnosticName=\"") +
           key + L"\",ExecutionID=\"" + adapter +
           L"\",DiagSystemCreationClassName=\"Win32_ComputerSystem\",DiagSystemName=\"" + ComputerName() +
           L"\"";
}
