#include "tools/zebdiag/RunTable.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/TerminalText.h"
#include "tools/zebdiag/TextWidth.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <functional>

namespace zebdiag
{
namespace
{
constexpr unsigned kLeastWidth = 50;
constexpr unsigned kLeastHeight = 6;
constexpr unsigned kOtherLines = 4; // headings, count of the tests that are not shown, bar, the free one
constexpr size_t kIndent = 2;
constexpr size_t kGap = 2;
constexpr size_t kLongestBar = 40;
constexpr size_t kLeastName = 6;  // of an adapter or a test
constexpr size_t kUsualTime = 11; // "59 min 59 s"

struct CStateWords
{
    std::wstring Text;
    Colour InColour;
};

std::wstring Running(std::optional<long> percent)
{
    return percent ? Said(L"running, {1}", {Percent(*percent)}) : Said(L"running");
}

CStateWords StateOf(const CRunRow& row)
{
    switch (row.Phase)
    {
    case RunPhase::Waiting:
        return {Said(L"waiting"), Colour::Plain};
    case RunPhase::LeftOut:
        return {Said(L"not run"), Colour::Yellow};
    case RunPhase::Running:
        return {Running(row.Percent), Colour::Plain};
    case RunPhase::Ended:
        break;
    }
    return {OutcomeInWords(row.Code), row.Code == ExitCode::Passed    ? Colour::Green
                                      : row.Code == ExitCode::Stopped ? Colour::Yellow
                                                                      : Colour::Red};
}

std::wstring TimeOf(const CRunRow& row)
{
    const bool lasts = row.Phase == RunPhase::Running || (row.Phase == RunPhase::Ended && row.HasRun);
    return lasts ? Duration(row.Seconds) : L"";
}

std::wstring CutTo(const std::wstring& text, size_t columns)
{
    constexpr std::wstring_view kCut = L"...";
    std::wstring cut = ForCell(text);
    if (ColumnsOf(cut) <= columns)
        return cut;
    if (columns <= kCut.size())
        return std::wstring(columns, L'.');
    while (!cut.empty() && ColumnsOf(cut) + kCut.size() > columns)
        cut.pop_back();
    // Half of a pair of code units is no character.
    if (!cut.empty() && cut.back() >= 0xD800 && cut.back() < 0xDC00)
        cut.pop_back();
    return cut.append(kCut);
}

std::wstring Padded(const std::wstring& text, size_t columns)
{
    std::wstring cell = CutTo(text, columns);
    return cell.append(columns - std::min(columns, ColumnsOf(cell)), L' ');
}

struct CRow
{
    std::wstring Adapter;
    std::wstring Test;
    CStateWords State;
    std::wstring Time;
};

struct CWidths
{
    size_t Adapter = 0;
    size_t Test = 0;
    size_t State = 0;
    size_t Time = 0;

    size_t Sum() const { return kIndent + Adapter + kGap + Test + kGap + State + kGap + Time; }
};

CWidths WidthsOf(const std::vector<CRow>& rows, size_t room)
{
    // What changes most does not move the columns.
    CWidths widths = {.State = ColumnsOf(Running(100)), .Time = kUsualTime};
    for (const CRow& row : rows)
    {
        widths.Adapter = std::max(widths.Adapter, ColumnsOf(row.Adapter));
        widths.Test = std::max(widths.Test, ColumnsOf(row.Test));
        widths.State = std::max(widths.State, ColumnsOf(row.State.Text));
        widths.Time = std::max(widths.Time, ColumnsOf(row.Time));
    }
    while (widths.Sum() > room)
    {
        size_t& longer = widths.Adapter > widths.Test ? widths.Adapter : widths.Test;
        if (longer <= kLeastName)
            break;
        --longer;
    }
    return widths;
}

CScreenLine LineOf(const CRow& row, const CWidths& widths, size_t room)
{
    const std::wstring gap(kGap, L' ');
    CScreenLine line = {{std::wstring(kIndent, L' ') + Padded(row.Adapter, widths.Adapter) + gap +
                         Padded(row.Test, widths.Test) + gap},
                        {row.State.Text, row.State.InColour}};
    if (!row.Time.empty())
        line.push_back({std::wstring(widths.State - ColumnsOf(row.State.Text), L' ') + gap + row.Time});
    for (CPiece& piece : line)
    {
        piece.Text = CutTo(piece.Text, room);
        room -= ColumnsOf(piece.Text);
    }
    return line;
}

std::vector<CScreenLine> LinesOf(const std::vector<const CRunRow*>& rows, size_t room)
{
    std::vector<CRow> shown = {
        {Said(L"Adapter"), Said(L"Test"), {Said(L"State"), Colour::Plain}, Said(L"Time")}};
    for (const CRunRow* row : rows)
        shown.push_back({row->Choice.Adapter->Name, row->Choice.Test->Caption, StateOf(*row), TimeOf(*row)});
    const CWidths widths = WidthsOf(shown, room);
    std::vector<CScreenLine> lines;
    for (const CRow& row : shown)
        lines.push_back(LineOf(row, widths, room));
    return lines;
}

// What runs is wanted most, then what went wrong, then what is still to come.
unsigned Importance(const CRunRow* row)
{
    switch (row->Phase)
    {
    case RunPhase::Running:
        return 4;
    case RunPhase::Ended:
        return row->Code == ExitCode::Passed ? 0 : 3;
    case RunPhase::Waiting:
        return 2;
    default:
        return 1;
    }
}

// The rows that there is room for, in their order.
std::vector<const CRunRow*> Chosen(const std::vector<CRunRow>& rows, size_t room)
{
    std::vector<const CRunRow*> chosen;
    for (const CRunRow& row : rows)
        chosen.push_back(&row);
    std::ranges::stable_sort(chosen, std::greater(), Importance);
    chosen.resize(std::min(room, chosen.size()));
    std::ranges::sort(chosen);
    return chosen;
}

std::wstring BarLine(const std::vector<CRunRow>& rows, Order order, size_t room)
{
    const auto ended = static_cast<size_t>(
        std::ranges::count_if(rows, [](const CRunRow& row) { return row.Phase == RunPhase::Ended; }));
    std::wstring figures = Said(L"{1} of {2} done", {std::to_wstring(ended), std::to_wstring(rows.size())});
    if (const auto left = SecondsLeft(rows, order); left && ended < rows.size())
        figures += Said(L", about {1} left", {Duration(*left)});
    const size_t others = kIndent + 2 + 1 + ColumnsOf(figures);
    std::wstring line(kIndent, L' ');
    if (room > others)
    {
        const size_t size = std::min(room - others, kLongestBar);
        const size_t full = size * PercentDone(rows) / 100;
        line += L"[" + std::wstring(full, L'#') + std::wstring(size - full, L'.') + L"] ";
    }
    return line + CutTo(figures, room - kIndent);
}
} // namespace

bool HasRoomForRuns(CScreenSize size) noexcept
{
    return size.Width >= kLeastWidth && size.Height >= kLeastHeight;
}

std::vector<CScreenLine> DrawRuns(const std::vector<CRunRow>& rows, Order order, CScreenSize size)
{
    const bool all = rows.size() + kOtherLines - 1 <= size.Height;
    // The window may have become lower since the table was begun.
    const size_t room = std::max(size.Height, kOtherLines) - kOtherLines;
    const std::vector<const CRunRow*> chosen = Chosen(rows, all ? rows.size() : room);
    std::vector<CScreenLine> lines = LinesOf(chosen, size.Width - 1);
    if (!all)
        lines.push_back({{std::wstring(kIndent, L' ') +
                          Said(L"({1} more)", {std::to_wstring(rows.size() - chosen.size())})}});
    lines.push_back({{BarLine(rows, order, size.Width - 1)}});
    return lines;
}

std::vector<CScreenLine> DrawEndedRuns(const std::vector<CRunRow>& rows, unsigned width)
{
    return LinesOf(Chosen(rows, rows.size()), width - 1);
}
} // namespace zebdiag
