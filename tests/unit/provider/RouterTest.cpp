#include "CDM/src/classes/WomClassHandler.h"
#include "tests/unit/provider/ProbeHandler.h"

#include <gtest/gtest.h>

namespace
{
class RouterTest : public testing::Test
{
  protected:
    CWomClassHandler* Add(const wchar_t* className)
    {
        m_scripts.push_back(std::make_unique<CProbeScript>());
        m_scripts.back()->ClassName = className;
        CProbeHandler::Use(m_scripts.back().get());
        m_handlers.push_back(CProbeHandler::Create());
        m_router.AddClass(m_handlers.back().get());
        return m_handlers.back().get();
    }

    std::vector<std::unique_ptr<CProbeScript>> m_scripts;
    std::vector<std::unique_ptr<CWomClassHandler>> m_handlers;
    CWomClassRouter m_router;
};

TEST_F(RouterTest, FindsHandlersWithoutRegardToCase)
{
    CWomClassHandler* const test = Add(L"Tolva_DiagTest");
    CWomClassHandler* const result = Add(L"Tolva_DiagResult");
    for (const wchar_t* name : {L"Tolva_DiagTest", L"tolva_diagtest", L"TOLVA_DIAGTEST"})
        EXPECT_EQ(m_router.FindClass(name), test);
    EXPECT_EQ(m_router.FindClass(L"tolva_DIAGRESULT"), result);
}

TEST_F(RouterTest, LettersOfTheAnsiCodePageHaveNoCaseEither)
{
    CWomClassHandler* const handler = Add(L"Tolva_Pr\u00fcfung");
    EXPECT_EQ(m_router.FindClass(L"TOLVA_PR\u00dcFUNG"), handler);
}

TEST_F(RouterTest, KnowsNoOtherClasses)
{
    Add(L"Tolva_DiagTest");
    EXPECT_EQ(m_router.FindClass(L"Tolva_DiagTes"), nullptr);
    EXPECT_EQ(m_router.FindClass(L"Tolva_DiagTest "), nullptr);
    EXPECT_EQ(m_router.FindClass(L""), nullptr);
    EXPECT_EQ(m_router.FindClass(nullptr), nullptr);
    EXPECT_EQ(m_router.FindClass(std::wstring(10000, L'x').c_str()), nullptr);
}

TEST_F(RouterTest, IsEmptyAfterClear)
{
    Add(L"Tolva_DiagTest");
    m_router.Clear();
    EXPECT_EQ(m_router.FindClass(L"Tolva_DiagTest"), nullptr);
}
} // namespace
