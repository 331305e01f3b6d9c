// How far a run has got, in plain lines: the first percentage that is known, then one for every so many
// percent; if none is known, one for every so many seconds.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zebdiag
{
class CProgress
{
  public:
    using Writer = std::function<void(std::wstring_view)>;

    // `label` names what runs.
    CProgress(Writer write, std::wstring label);

    // `percent` may exceed 100.
    void Show(std::optional<long> percent, unsigned long long elapsedSeconds);

  private:
    Writer m_write;
    std::wstring m_label;
    std::optional<long> m_saidPercent; // of the last line
    unsigned long long m_saidSeconds = 0;
};
} // namespace zebdiag
