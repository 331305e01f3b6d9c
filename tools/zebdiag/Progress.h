// How far a run has got: a bar that is drawn over where a person watches, a line now and then elsewhere.
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

    // `label` names what runs. On a terminal the bar is `width` characters wide at most.
    CProgress(Writer write, std::wstring label, bool terminal, unsigned width);
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    // `percent` is absent where nobody knows; it may exceed 100.
    void Show(std::optional<long> percent, unsigned long long elapsedSeconds);
    // A remark in between, on a line of its own.
    void Say(std::wstring_view text);
    // Removes the bar. To be called at the end; nothing is drawn afterwards.
    void Finish();

  private:
    void Draw(const std::wstring& line);
    void DrawBar(std::optional<long> percent, unsigned long long elapsedSeconds);
    void WriteLine(std::optional<long> percent, unsigned long long elapsedSeconds);

    Writer m_write;
    std::wstring m_label;
    bool m_terminal;
    unsigned m_width;
    size_t m_drawn = 0;                // columns that the bar occupies
    std::optional<long> m_saidPercent; // of the last plain line
    unsigned long long m_saidSeconds = 0;
    bool m_finished = false;
};
} // namespace zebdiag
