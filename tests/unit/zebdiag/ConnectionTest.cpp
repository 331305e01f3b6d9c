#include "tools/zebdiag/Connection.h"

#include "Common/src/com/ComObject.h"
#include "Common/src/com/WmiStatus.h"
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

    STDMETHODIMP ConnectServer(const BSTR resource, const BSTR user, const BSTR password, const BSTR locale,
                               LONG, const BSTR, IWbemContext*, IWbemServices** services) override
    {
        Resource = Text(resource);
        User = Text(user);
        Password = Text(password);
        Locale = Text(locale);
        if (FAILED(m_answer))
            return m_answer;
        *services =
            MakeCom<CFakeServices>([](const std::wstring&) { return ComPtr<IWbemClassObject>(); }).Detach();
        return S_OK;
    }

    std::wstring Resource, User, Password, Locale;

  private:
    static std::wstring Text(BSTR text) { return text ? std::wstring(text, SysStringLen(text)) : L"(null)"; }

    HRESULT m_answer;
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
