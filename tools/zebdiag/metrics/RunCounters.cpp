#include "tools/zebdiag/metrics/RunCounters.h"

#include "tools/zebdiag/Words.h"

#include <array>
#include <cwchar>

namespace zebdiag
{
namespace
{
constexpr size_t kCounters = 11;

std::optional<unsigned long> NumberAtEnd(const std::wstring& finding)
{
    const size_t begin = finding.find_last_not_of(L"0123456789") + 1;
    if (begin == finding.size())
        return std::nullopt;
    return std::wcstoul(finding.c_str() + begin, nullptr, 10);
}
} // namespace

std::optional<CRunCounters> CountersOf(const CResult& result)
{
    const std::vector<std::wstring> findings = Findings(result);
    if (findings.size() != kCounters)
        return std::nullopt;
    std::array<unsigned long, kCounters> n = {};
    for (size_t i = 0; i < kCounters; ++i)
    {
        const auto number = NumberAtEnd(findings[i]);
        if (!number)
            return std::nullopt;
        n[i] = *number;
    }
    return CRunCounters{
        static_cast<RunRole>(n[0]), n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8], n[9], n[10]};
}
} // namespace zebdiag
