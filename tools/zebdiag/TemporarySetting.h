// Values that a setting has for one run.
#pragma once

#include "tools/zebdiag/Model.h"
#include "tools/zebdiag/WmiSession.h"

#include <optional>

namespace zebdiag
{
enum class Restored
{
    All,
    NotAll, // another client has changed some meanwhile, and keeps them
    Failed  // the provider did not take them back
};

// Hold until they are restored, at the latest at the end of the scope.
class CTemporarySetting
{
  public:
    CTemporarySetting(const CWmiSession& session, const CTest& test, const CSettingValues& values);
    CTemporarySetting(const CTemporarySetting&) = delete;
    CTemporarySetting& operator=(const CTemporarySetting&) = delete;
    ~CTemporarySetting() { Restore(); }

    // Puts back what is still as this run has left it.
    Restored Restore() noexcept;

  private:
    const CWmiSession& m_session;
    const CTest& m_test;
    CSettingValues m_given;
    std::optional<CSettingValues> m_before;
};
} // namespace zebdiag
