// Classes and instances, in all the ways in which a client can ask for them.
#include "tests/support/CaseName.h"
#include "tests/system/standin/SavedSetting.h"
#include "tests/system/standin/StandinFixture.h"
#include "tests/system/standin/TestProviderIds.h"

namespace
{
const std::vector<std::wstring> kItems = {L"n1", L"n2", L"n3"};

class CStandinRead : public CStandinTest
{
};

TEST_F(CStandinRead, GivesClassesOfTheRepository)
{
    ComPtr<IWbemClassObject> definition;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"standintest_ITEM", definition));
    EXPECT_EQ(L"StandinTest_Item", Text(definition.Get(), L"__CLASS"));
    EXPECT_EQ(L"StandinTest_Base", Text(definition.Get(), L"__SUPERCLASS"));
    EXPECT_EQ(L"1", Text(definition.Get(), L"__GENUS"));
    EXPECT_EQ(L"root\\cimv2", Text(definition.Get(), L"__NAMESPACE"));
}

TEST_F(CStandinRead, GivesTypedProperties)
{
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n2\"", item));
    EXPECT_EQ(L"2", Text(item.Get(), L"Number"));
    EXPECT_EQ(L"10000000000", Text(item.Get(), L"Big"));
    EXPECT_EQ(L"true", Text(item.Get(), L"Even"));
    EXPECT_EQ(L"(null)", Text(item.Get(), L"Text"));
    EXPECT_EQ(L"StandinTest_Item.Name=\"n2\"", Text(item.Get(), L"__RELPATH"));
    wchar_t computer[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(computer, &size);
    EXPECT_EQ(std::wstring(L"\\\\") + computer + L"\\root\\cimv2:StandinTest_Item.Name=\"n2\"",
              Text(item.Get(), L"__PATH"));
}

struct PathCase
{
    const char* name;
    const wchar_t* Path;
    HRESULT Result;
};
class CStandinPath : public CStandinTest, public testing::WithParamInterface<PathCase>
{
};
TEST_P(CStandinPath, Answers)
{
    ComPtr<IWbemClassObject> object;
    EXPECT_EQ(GetParam().Result, Get(GetParam().Path, object));
    EXPECT_EQ(SUCCEEDED(GetParam().Result), object.Get() != nullptr);
}
INSTANTIATE_TEST_SUITE_P(
    Paths, CStandinPath,
    testing::Values(
        PathCase{"Instance", L"StandinTest_Item.Name=\"n1\"", WBEM_S_NO_ERROR},
        PathCase{"UnnamedKey", L"StandinTest_Item=\"n1\"", WBEM_S_NO_ERROR},
        PathCase{"SingleQuotes", L"StandinTest_Item.Name='n1'", WBEM_S_NO_ERROR},
        PathCase{"WithNamespace", L"root\\cimv2:StandinTest_Item.Name=\"n1\"", WBEM_S_NO_ERROR},
        PathCase{"WithServer", L"\\\\.\\root\\cimv2:StandinTest_Item.Name=\"n1\"", WBEM_S_NO_ERROR},
        PathCase{"ByBaseClass", L"StandinTest_Base.Name=\"n1\"", WBEM_S_NO_ERROR},
        PathCase{"UnknownKey", L"StandinTest_Item.Name=\"n4\"", wmi::NotFound},
        PathCase{"UnknownClass", L"StandinTest_None", wmi::NotFound},
        PathCase{"UnknownClassInstance", L"StandinTest_None.Name=\"n1\"", wmi::NotFound},
        PathCase{"NobodysInstance", L"StandinTest_Nobodys.Name=\"n1\"", wmi::NotFound},
        PathCase{"UnknownNamespace", L"root\\none:StandinTest_Item.Name=\"n1\"", wmi::InvalidNamespace},
        PathCase{"NoQuotes", L"StandinTest_Item.Name=n1", wmi::InvalidObjectPath},
        PathCase{"NoValue", L"StandinTest_Item.Name=", wmi::InvalidObjectPath},
        PathCase{"Rest", L"StandinTest_Item.Name=\"n1\" x", wmi::InvalidObjectPath},
        PathCase{"NoSuchKey", L"StandinTest_Item.Title=\"n1\"", wmi::InvalidObjectPath},
        PathCase{"KeyMissing", L"StandinTest_Next.Before=\"StandinTest_Item='n1'\"", wmi::InvalidObjectPath},
        PathCase{"PropertyInsteadOfKey", L"StandinTest_Item.Number=1", wmi::InvalidObjectPath},
        PathCase{"KeyOfNone", L"StandinTest_Item=@", wmi::InvalidObjectPath},
        PathCase{"OtherServer", L"\\\\elsewhere\\root\\cimv2:StandinTest_Item.Name=\"n1\"",
                 wmi::InvalidObjectPath}),
    NameOf<PathCase>);

TEST_F(CStandinRead, TakesMoreThanTheKeysUnlessItIsStrict)
{
    constexpr wchar_t path[] = L"StandinTest_Item.Name=\"n1\",Number=1";
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(path, item));
    {
        const CStrictService strict;
        EXPECT_EQ(wmi::InvalidObjectPath, Get(path, item));
        EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
    }
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(path, item));
}

TEST_F(CStandinRead, AnswersLaterThroughACallResult)
{
    ComPtr<IWbemCallResult> result;
    ASSERT_EQ(WBEM_S_NO_ERROR,
              m_services->GetObject(CBstr(L"StandinTest_Item.Name=\"n1\"").Get(),
                                    WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, nullptr, result.Put()));
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(WBEM_S_NO_ERROR, result->GetResultObject(60000, item.Put()));
    EXPECT_EQ(L"n1", Text(item.Get(), L"Name"));
    LONG status = -1;
    ASSERT_EQ(WBEM_S_NO_ERROR, result->GetCallStatus(0, &status));
    EXPECT_EQ(WBEM_S_NO_ERROR, status);
}

TEST_F(CStandinRead, RefusesToAnswerLaterToNobody)
{
    ComPtr<IWbemClassObject> object;
    EXPECT_EQ(wmi::InvalidParameter,
              m_services->GetObject(CBstr(L"StandinTest_Item.Name=\"n1\"").Get(),
                                    WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, object.Put(), nullptr));
}

struct FlagsCase
{
    const char* name;
    long Flags;
};
class CStandinEnumeration : public CStandinTest, public testing::WithParamInterface<FlagsCase>
{
};
TEST_P(CStandinEnumeration, DeliversAllInOrder)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Enumerate(L"StandinTest_Item", GetParam().Flags, objects));
    HRESULT end = E_FAIL;
    EXPECT_EQ(kItems, Texts(ReadAll(objects.Get(), end), L"Name"));
    EXPECT_EQ(WBEM_S_FALSE, end);
}
INSTANTIATE_TEST_SUITE_P(
    Forms, CStandinEnumeration,
    testing::Values(FlagsCase{"Synchronous", 0}, FlagsCase{"SemiSynchronous", WBEM_FLAG_RETURN_IMMEDIATELY},
                    FlagsCase{"ForwardOnly", WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY},
                    FlagsCase{"Shallow", WBEM_FLAG_SHALLOW}),
    NameOf<FlagsCase>);

TEST_F(CStandinRead, EnumeratesInstancesOfDerivedClasses)
{
    ComPtr<IEnumWbemClassObject> links;
    ASSERT_EQ(WBEM_S_NO_ERROR, Enumerate(L"StandinTest_Nobodys", 0, links));
    HRESULT end = E_FAIL;
    EXPECT_TRUE(ReadAll(links.Get(), end).empty());
    EXPECT_EQ(WBEM_S_FALSE, end);
    EXPECT_EQ(wmi::InvalidClass, Enumerate(L"StandinTest_None", 0, links));
}

TEST_F(CStandinRead, KeepsTheOrderOfManyInstances)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR,
              Enumerate(L"StandinTest_Many", WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY, objects));
    HRESULT end = E_FAIL;
    const Objects all = ReadAll(objects.Get(), end);
    EXPECT_EQ(WBEM_S_FALSE, end);
    ASSERT_EQ(kManyInstances, all.size());
    for (unsigned i = 0; i < kManyInstances; ++i)
        ASSERT_EQ(std::to_wstring(i), Text(all[i].Get(), L"Number"));
}

TEST_F(CStandinRead, GoesBackAndClonesAnEnumeration)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Enumerate(L"StandinTest_Item", WBEM_FLAG_RETURN_IMMEDIATELY, objects));
    ASSERT_EQ(WBEM_S_NO_ERROR, objects->Skip(60000, 1));
    ComPtr<IEnumWbemClassObject> copy;
    ASSERT_EQ(WBEM_S_NO_ERROR, objects->Clone(copy.Put()));
    HRESULT end = E_FAIL;
    EXPECT_EQ((std::vector<std::wstring>{L"n2", L"n3"}), Texts(ReadAll(objects.Get(), end), L"Name"));
    EXPECT_EQ((std::vector<std::wstring>{L"n2", L"n3"}), Texts(ReadAll(copy.Get(), end), L"Name"));
    ASSERT_EQ(WBEM_S_NO_ERROR, objects->Reset());
    EXPECT_EQ(kItems, Texts(ReadAll(objects.Get(), end), L"Name"));
}

TEST_F(CStandinRead, GoesForwardOnlyWhereAskedTo)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Enumerate(L"StandinTest_Item", WBEM_FLAG_FORWARD_ONLY, objects));
    ComPtr<IEnumWbemClassObject> copy;
    EXPECT_EQ(static_cast<HRESULT>(WBEM_E_INVALID_OPERATION), objects->Reset());
    EXPECT_EQ(static_cast<HRESULT>(WBEM_E_INVALID_OPERATION), objects->Clone(copy.Put()));
}

TEST_F(CStandinRead, ChecksTheArgumentsOfNext)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Enumerate(L"StandinTest_Item", 0, objects));
    IWbemClassObject* object = nullptr;
    ULONG returned = 0;
    EXPECT_EQ(wmi::InvalidParameter, objects->Next(-2, 1, &object, &returned));
    EXPECT_EQ(wmi::InvalidParameter, objects->Next(0, 0, &object, &returned));
    EXPECT_EQ(wmi::InvalidParameter, objects->Next(0, 1, nullptr, &returned));
    EXPECT_EQ(wmi::InvalidParameter, objects->Next(0, 1, &object, nullptr));
}

TEST_F(CStandinRead, PassesTheContextToTheProviderAsItIs)
{
    ComPtr<IWbemContext> context;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_WbemContext, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IWbemContext),
                                     context.PutVoid()));
    CVariant session = CVariant::FromText(L"S1");
    ASSERT_EQ(S_OK, context->SetValue(L"SessionHandle", 0, &session));
    ComPtr<IWbemServices> german;
    ASSERT_EQ(WBEM_S_NO_ERROR, Connect(L"root\\cimv2", L"MS_407", german));
    ComPtr<IWbemClassObject> item;
    const CBstr path(L"StandinTest_Item.Name=\"context\"");
    ASSERT_EQ(WBEM_S_NO_ERROR, german->GetObject(path.Get(), 0, context.Get(), item.Put(), nullptr));
    EXPECT_EQ(L"-/S1", Text(item.Get(), L"Text")); // the connection's locale is not the call's

    CVariant locale = CVariant::FromText(L"MS_40C");
    ASSERT_EQ(S_OK, context->SetValue(L"LocaleID", 0, &locale));
    ASSERT_EQ(WBEM_S_NO_ERROR, german->GetObject(path.Get(), 0, context.Get(), item.Put(), nullptr));
    EXPECT_EQ(L"MS_40C/S1", Text(item.Get(), L"Text"));

    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"context\"", item));
    EXPECT_EQ(L"-/-", Text(item.Get(), L"Text"));
}
} // namespace
