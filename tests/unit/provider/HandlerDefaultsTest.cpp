// What a handler does that overrides only what it must.
#include "Common/src/WomContext.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/FakeSink.h"
#include "tests/unit/provider/ProbeHandler.h"

#include <gtest/gtest.h>

namespace
{
class HandlerDefaultsTest : public testing::Test
{
  protected:
    HandlerDefaultsTest() { CProbeHandler::Use(&m_script); }
    ~HandlerDefaultsTest() override { EXPECT_EQ(References(), 1u) << "the handler gave its reference up"; }

    ULONG References()
    {
        m_sink->AddRef();
        return m_sink->Release();
    }

    CProbeScript m_script;
    ComPtr<CFakeSink> m_sink = MakeCom<CFakeSink>();
    CWomContext m_context{nullptr, 0x409, L"DREVOK_PROVIDER", L"Test", nullptr, nullptr, 0, true};
    CWomClassObject m_object{&m_context};
};

TEST_F(HandlerDefaultsTest, WritingIsNotSupported)
{
    CBstr path;
    EXPECT_EQ(CProbeHandler::Create()->PutInstanceAsync(m_object, m_context, path, m_sink),
              wmi::NotSupported);
    EXPECT_FALSE(path);
    EXPECT_TRUE(m_sink->Statuses().empty());
}

TEST_F(HandlerDefaultsTest, MethodsAreNotSupported)
{
    EXPECT_EQ(CProbeHandler::Create()->ExecMethodAsync({}, L"Run", m_context, m_object, m_object, m_sink),
              wmi::NotSupported);
    EXPECT_TRUE(m_sink->Statuses().empty());
}

TEST_F(HandlerDefaultsTest, QueriesEnumerate)
{
    int calls = 0;
    m_script.Enumerate = [&](CWomContext& context, IWbemObjectSink* sink)
    {
        ++calls;
        EXPECT_EQ(&context, &m_context);
        EXPECT_EQ(sink, m_sink.Get());
        return E_ACCESSDENIED;
    };
    EXPECT_EQ(CProbeHandler::Create()->ExecQueryAsync(L"select * from Tolva_DiagTest", m_context, m_sink),
              E_ACCESSDENIED);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(m_sink->Statuses().empty());
}

} // namespace
