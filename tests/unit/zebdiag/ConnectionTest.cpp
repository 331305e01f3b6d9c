#include "tools/zebdiag/Connection.h"

#include "Common/src/com/ComObject.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "FakeDiagnostics.h"
#include "tests/support/CaseName.h"
#include "tests/support/FakeServices.h"

namespace zebdiag
{
namespace
{
// Remembers what it was asked for.
class CFakeLocator final : public CComObject<IWbemLocator>
{
  public:
    explicit CFakeLocator(HRESULT answer = S_OK) : m_answer(answer) {}
    explicit CFakeLocator(ComPtr<IWbemServices> services) : m_answer(S_OK), m_services(std::move(services)) {}

    STDMETHODIMP ConnectServer(const BSTR resource, const BSTR user, const BSTR password, const BSTR locale,
                               LONG, const BSTR, IWbemContext*, IWbemServices** services) override
    {
        Resource = Text(resource);
        User = Text(user);
        Password = Text(password);
        Locale = Text(locale);
        if (FAILED(m_answer))
            return m_answer;
        if (m_services)
        {
            *services = m_services.Copy();
            return S_OK;
        }
        *services =
            MakeCom<CFakeServices>([](const std::wstring&) { return ComPtr<IWbemClassObject>(); }).Detach();
        return S_OK;
    }

    std::wstring Resource, User, Password, Locale;

  private:
    static std::wstring Text(BSTR text) { return text ? std::wstring(text, SysStringLen(text)) : L"(null)"; }

    HRESULT m_answer;
    ComPtr<IWbemServices> m_services;
};

struct ConnectCase
{
    const char* name;
    CTarget target;
    const wchar_t* resource;
    const wchar_t* locale;
};

class ConnectTest : public testing::TestWithParam<ConnectCase>
{
};

TEST_P(ConnectTest, AsksTheLocator)
{
    const auto locator = MakeCom<CFakeLocator>();
    ConnectThrough(locator.Get(), GetParam().target, L"");
    EXPECT_EQ(locator->Resource, GetParam().resource);
    EXPECT_EQ(locator->Locale, GetParam().locale);
    EXPECT_EQ(locator->User, L"(null)");
    EXPECT_EQ(locator->Password, L"(null)");
}

INSTANTIATE_TEST_SUITE_P(
    Targets, ConnectTest,
    testing::Values(ConnectCase{"ThisComputer", {}, L"root\\cimv2", L"(null)"},
                    ConnectCase{"AnotherNamespace", {L"", L"root\\test", L"", L""}, L"root\\test", L"(null)"},
                    ConnectCase{"AnotherComputer",
                                {L"WS42", L"root\\cimv2", L"", L"MS_407"},
                                L"\\\\WS42\\root\\cimv2",
                                L"MS_407"},
                    ConnectCase{
                        "Localhost", {L"localhost", L"root\\cimv2", L"", L""}, L"root\\cimv2", L"(null)"}),
    NameOf<ConnectCase>);

std::wstring CallersOwnLocale()
{
    wchar_t name[16] = {};
    _snwprintf(name, 15, L"MS_%x", GetUserDefaultUILanguage());
    return name;
}

TEST(ConnectTest, EveryCallTellsTheCallersLanguage)
{
    for (const auto& [asked, told] :
         std::map<std::wstring, std::wstring>{{L"MS_407", L"MS_407"}, {L"", CallersOwnLocale()}})
    {
        const auto world = MakeCom<CFakeDiagnostics>();
        world->Add(L"9@{AAAA}", L"Sender", true);
        const auto locator = MakeCom<CFakeLocator>(world);
        const CWmiSession session = ConnectThrough(locator.Get(), {L"", L"root\\cimv2", L"", asked}, L"");
        session.InstancesOf(kTestClass);
        const WmiObject setting = session.TryGet(L"Tolva_DiagSetting.SettingID=\"9@{AAAA}\"", kSettingClass);
        ASSERT_TRUE(setting);
        session.Update(setting.Get(), kSettingClass);
        session.Call(L"Tolva_DiagTest.Name=\"9@{AAAA}\"", kTestClass, L"ClearResults", {});
        // The last one is two: the method's signature is asked for first.
        EXPECT_EQ(world->Locales, std::vector<std::wstring>(5, told)) << Utf8Text(asked);
    }
}

struct BlanketCase
{
    const char* name;
    const wchar_t* user;
    const wchar_t* as;
};

class BlanketTest : public testing::TestWithParam<BlanketCase>
{
};

TEST_P(BlanketTest, EveryProxyHasItAndSoHasItsIUnknown)
{
    const auto world = MakeCom<CFakeDiagnostics>();
    world->Security = MakeCom<CFakeSecurity>();
    world->Add(L"1@{AAAA}", L"Link");
    const auto locator = MakeCom<CFakeLocator>(world);
    const CWmiSession session =
        ConnectThrough(locator.Get(), {L"WS42", L"root\\cimv2", GetParam().user, L""}, L"secret");
    EXPECT_EQ(session.InstancesOf(kTestClass).size(), 1u);

    const auto& blankets = world->Security->Blankets;
    ASSERT_EQ(blankets.size(), 4u) << "the namespace and the enumeration, each with its IUnknown";
    IUnknown* const services = world.Get();
    IUnknown* const unknown = world->Security.Get();
    EXPECT_EQ(blankets[0].Proxy, services);
    EXPECT_EQ(blankets[1].Proxy, unknown);
    EXPECT_TRUE(blankets[2].Proxy != services && blankets[2].Proxy != unknown);
    EXPECT_EQ(blankets[3].Proxy, unknown);
    for (const auto& blanket : blankets)
    {
        EXPECT_EQ(blanket.User, GetParam().as);
        EXPECT_EQ(blanket.Level, DWORD{RPC_C_AUTHN_LEVEL_PKT_PRIVACY});
        EXPECT_EQ(blanket.Impersonation, DWORD{RPC_C_IMP_LEVEL_IMPERSONATE});
    }
}

INSTANTIATE_TEST_SUITE_P(Callers, BlanketTest,
                         testing::Values(BlanketCase{"WhoRunsTheProgram", L"", L"-"},
                                         BlanketCase{"SomebodyElse", L"EXAMPLE\\admin", L"admin"}),
                         NameOf<BlanketCase>);

TEST(ConnectTest, FailureIsThrown)
{
    const auto locator = MakeCom<CFakeLocator>(wmi::InvalidNamespace);
    try
    {
        ConnectThrough(locator.Get(), CTarget(), L"");
        FAIL() << "connected";
    }
    catch (const CFailure& failure)
    {
        EXPECT_EQ(failure.Code, ExitCode::NotReachable);
        EXPECT_EQ(failure.Cause, L"There is no namespace root\\cimv2 on this computer.");
    }
}

TEST(ConnectTest, UserAndPasswordAreGivenToTheLocator)
{
    const auto locator = MakeCom<CFakeLocator>();
    // What is connected to here is no proxy, so it cannot be given an identity.
    EXPECT_THROW(ConnectThrough(locator.Get(), {L"WS42", L"root\\cimv2", L"EXAMPLE\\admin", L""}, L"secret"),
                 CFailure);
    EXPECT_EQ(locator->User, L"EXAMPLE\\admin");
    EXPECT_EQ(locator->Password, L"secret");
}
} // namespace
} // namespace zebdiag
