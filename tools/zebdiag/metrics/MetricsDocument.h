// The metrics of one machine, described in docs/metrics.md.
#pragma once

#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/Model.h"

#include <map>
#include <optional>
#include <string>

namespace zebdiag
{
// Raised with every metric or label that goes or changes its meaning; additions leave it as it is.
inline constexpr int kMetricsVersion = 1;

struct CMetricsFacts
{
    long long Now = 0;                         // seconds since 1970
    const CFailure* Failure = nullptr;         // why the provider could not be asked; then only this is told
    unsigned long long AnswerMilliseconds = 0; // until it had named its tests
    CInventory Inventory;
    std::map<std::wstring, CResult> Results;     // by the key of the test
    const TIME_ZONE_INFORMATION* Zone = nullptr; // of the results' times; null: this computer's
};

// In UTF-8.
std::string MetricsDocument(const CMetricsFacts& facts);
} // namespace zebdiag
