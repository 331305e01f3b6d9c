#include "tools/zebdiag/TemporarySetting.h"

#include "tools/zebdiag/Inventory.h"

#include <utility>

namespace zebdiag
{
namespace
{
// One value: what there is to put back. Nothing where it is not as this run has left it.
template <class T>
std::optional<T> BackTo(const std::optional<T>& before, const std::optional<T>& given,
                        const std::optional<T>& now, bool& changedMeanwhile)
{
    if (!given || !now)
        return std::nullopt;
    if (*now == *given)
        return before;
    changedMeanwhile = true;
    return std::nullopt;
}
} // namespace

CTemporarySetting::CTemporarySetting(const CWmiSession& session, const CTest& test,
                                     const CSettingValues& values)
    : m_session(session), m_test(test)
{
    if (!values.Quick && !values.Report && !values.Coverage)
        return;
    const std::optional<CSetting> current = LoadSetting(session, test);
    if (!current)
        throw FailureOf(WBEM_E_NOT_FOUND, Step::Read, session.Target(), kSettingClass);
    StoreSetting(session, test, values);
    m_given = values;
    m_before = current->Values;
}

Restored CTemporarySetting::Restore() noexcept
{
    const auto before = std::exchange(m_before, std::nullopt);
    if (!before)
        return Restored::All;
    try
    {
        const std::optional<CSetting> now = LoadSetting(m_session, m_test);
        if (!now)
            return Restored::Failed;
        bool changedMeanwhile = false;
        CSettingValues back;
        back.Quick = BackTo(before->Quick, m_given.Quick, now->Values.Quick, changedMeanwhile);
        back.Report = BackTo(before->Report, m_given.Report, now->Values.Report, changedMeanwhile);
        back.Coverage = BackTo(before->Coverage, m_given.Coverage, now->Values.Coverage, changedMeanwhile);
        if (back.Quick || back.Report || back.Coverage)
            StoreSetting(m_session, m_test, back);
        return changedMeanwhile ? Restored::NotAll : Restored::All;
    }
    catch (...)
    {
        return Restored::Failed;
    }
}
} // namespace zebdiag
