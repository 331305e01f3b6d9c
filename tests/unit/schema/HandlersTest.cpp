// That the list of what the provider writes is what the handlers write, neither more nor less.
#include "CDM/src/classes/Associations.h"
#include "CDM/src/classes/ResultHandler.h"
#include "CDM/src/classes/SettingHandler.h"
#include "CDM/src/classes/TestHandler.h"
#include "Common/src/WomExtendedStatus.h"
#include "Common/src/com/Text.h"
#include "tests/unit/classes/HandlerTest.h"
#include "tests/unit/schema/WrittenProperties.h"

namespace
{
// "Class.Property", and the types of the values that were found there; none where it is always null.
using WrittenTypes = std::map<std::string, std::set<VARTYPE>>;

class HandlersTest : public HandlerTest
{
  protected:
    HandlersTest()
    {
        for (auto& [key, result] : m_manager.Results)
        {
            result.TestStartTime = result.TestCompletionTime = result.TimeStamp =
                SYSTEMTIME{2025, 3, 0, 14, 1, 2, 3, 4};
            result.TestState = TestStatePassed;
            result.PercentComplete = 100;
        }
        m_manager.Tests[L"9@B"].ResourcesUsed = {1};
    }

    // Forgets what was put so far, and notes what is put from here on into what `write` hands over.
    template <class Write>
    void Note(Write&& write)
    {
        m_plan->ForgetPuts();
        const std::vector<ComPtr<IWbemClassObject>> objects = write();
        ASSERT_FALSE(objects.empty());
        for (const auto& object : objects)
            for (const std::wstring& name : m_plan->Puts())
            {
                const CVariant value = Read(object, name.c_str());
                std::set<VARTYPE>& types = m_written[NarrowText(ReadText(object, L"__CLASS") + L"." + name)];
                if (value.vt != VT_NULL)
                    types.insert(value.vt);
            }
    }
    template <class Handler>
    void NoteInstances()
    {
        Note(
            [&]
            {
                Handler handler;
                m_sink = MakeCom<CFakeSink>();
                EXPECT_EQ(S_OK, Prepared(handler).CreateInstanceEnumAsync(Context(), m_sink));
                return Indicated();
            });
    }
    void NoteExtendedStatus()
    {
        Note(
            [&]
            {
                m_sink = MakeCom<CFakeSink>();
                ReportToSink(CWomProviderException(&Context(), E_FAIL, L"info", E_FAIL, "file", 1, "text",
                                                   {CBstr(L"reason")}),
                             m_sink);
                std::vector<ComPtr<IWbemClassObject>> objects;
                for (const CFakeSink::CStatus& status : m_sink->Statuses())
                    objects.push_back(status.Object);
                return objects;
            });
    }

    WrittenTypes m_written;
};

TEST_F(HandlersTest, WriteWhatTheListSays)
{
    NoteInstances<CTolva_DiagTest>();
    NoteInstances<CTolva_DiagResult>();
    NoteInstances<CTolva_DiagSetting>();
    NoteInstances<CTolva_DiagTestMSEAssoc>();
    NoteInstances<CTolva_DiagResultMSEAssoc>();
    NoteInstances<CTolva_DiagResultTestAssoc>();
    NoteInstances<CTolva_DiagSettingTestAssoc>();
    NoteExtendedStatus();

    for (const PropertyCase& row : kWritten)
    {
        const std::string name = NarrowText(std::wstring(row.className) + L"." + row.property);
        const auto written = m_written.find(name);
        if (written == m_written.end())
        {
            ADD_FAILURE() << name << " is listed, and not written";
            continue;
        }
        for (const VARTYPE type : written->second)
            EXPECT_EQ(Sample(row.kind).vt, type) << name;
        m_written.erase(written);
    }
    for (const auto& [name, types] : m_written)
        ADD_FAILURE() << name << " is written, and not listed";
}
} // namespace
