// Clients of the stand-in, which has the classes of StandinTest.mof for the time of this program.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/Variant.h"
#include "Common/src/com/WmiStatus.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using Objects = std::vector<ComPtr<IWbemClassObject>>;

class CStandinTest : public testing::Test
{
  protected:
    void SetUp() override;
    void TearDown() override;

    static HRESULT Connect(const wchar_t* nameSpace, const wchar_t* locale, ComPtr<IWbemServices>& services);

    HRESULT Get(const wchar_t* path, ComPtr<IWbemClassObject>& object, IWbemContext* context = nullptr) const
    {
        return m_services->GetObject(CBstr(path).Get(), 0, context, object.Put(), nullptr);
    }
    HRESULT Enumerate(const wchar_t* className, long flags, ComPtr<IEnumWbemClassObject>& objects) const
    {
        return m_services->CreateInstanceEnum(CBstr(className).Get(), flags, nullptr, objects.Put());
    }
    HRESULT Query(const wchar_t* text, ComPtr<IEnumWbemClassObject>& objects) const
    {
        return m_services->ExecQuery(CBstr(L"WQL").Get(), CBstr(text).Get(),
                                     WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY, nullptr,
                                     objects.Put());
    }

    ComPtr<IWbemServices> m_services;
};

// Reads to the end; the last code of Next goes to `end`.
Objects ReadAll(IEnumWbemClassObject* objects, HRESULT& end);

// A property as text: numbers in decimal, booleans as "true" and "false", null as "(null)", anything that
// cannot be read as "(error)".
std::wstring Text(IWbemClassObject* object, const wchar_t* property);
std::vector<std::wstring> Texts(const Objects& objects, const wchar_t* property);

// The status object that the last failed call of this thread left; null where there is none.
ComPtr<IWbemClassObject> TakeErrorObject();

// An instance of a method's in-parameters with one number in it.
ComPtr<IWbemClassObject> InParameters(IWbemServices* services, const wchar_t* method, const wchar_t* name,
                                      LONG value);
