#include "tools/zebdiag/report/CounterChart.h"

#include "tools/zebdiag/languages/Said.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr unsigned kWholeBar = 1000;
constexpr unsigned kLeastBar = 8;

// The provider's order: role, link, median round trip, then these.
enum Place : size_t
{
    kReceivedThere = 3,
    kRepliesSent,
    kSent,
    kRepliesReceived,
    kTwiceOrOutOfOrder,
    kLostThere,
    kLostBack,
    kLongestRoundTrip,
    kPlaces
};

struct CBarRow
{
    Place Counter;
    const wchar_t* Class;
};
constexpr CBarRow kBars[] = {
    {kSent, L"good"},     {kReceivedThere, L"good"}, {kRepliesSent, L"good"},     {kRepliesReceived, L"good"},
    {kLostThere, L"bad"}, {kLostBack, L"bad"},       {kTwiceOrOutOfOrder, L"odd"}};
constexpr size_t kValues[] = {0, 1, 2, kLongestRoundTrip};

void AddBar(CHtml& html, const wchar_t* kind, unsigned length)
{
    // The number stands beside it, so that nobody misses anything who cannot see the bar.
    const auto svg = html.Element(L"svg", {{L"class", L"bar"},
                                           {L"viewBox", L"0 0 1000 10"},
                                           {L"preserveAspectRatio", L"none"},
                                           {L"aria-hidden", L"true"}});
    html.Add(L"rect", L"", {{L"class", L"room"}, {L"width", L"1000"}, {L"height", L"10"}});
    if (length)
        html.Add(L"rect", L"", {{L"class", kind}, {L"width", std::to_wstring(length)}, {L"height", L"10"}});
}

void AddValue(CHtml& html, const CCounter& counter)
{
    const auto row = html.Element(L"div");
    html.Add(L"dt", counter.Name);
    html.Add(L"dd", std::to_wstring(counter.Value));
}

void AddBars(CHtml& html, const std::vector<CCounter>& counters)
{
    unsigned long most = 0;
    for (const CBarRow& bar : kBars)
        most = std::max(most, counters[bar.Counter].Value);
    const auto figure = html.Element(L"figure");
    html.Add(L"figcaption", Said(L"Packets"));
    const auto chart = html.Element(L"dl", {{L"class", L"bars"}});
    for (const CBarRow& bar : kBars)
    {
        const CCounter& counter = counters[bar.Counter];
        const auto row = html.Element(L"div");
        html.Add(L"dt", counter.Name);
        const auto value = html.Element(L"dd");
        AddBar(html, bar.Class, BarLength(counter.Value, most));
        html.Add(L"span", std::to_wstring(counter.Value));
    }
}
} // namespace

unsigned BarLength(unsigned long value, unsigned long most) noexcept
{
    if (value == 0 || most == 0)
        return 0;
    return std::max(kLeastBar, static_cast<unsigned>(1ULL * value * kWholeBar / most));
}

void AddCounters(CHtml& html, const std::vector<CCounter>& counters)
{
    const bool known = counters.size() == kPlaces;
    if (known)
        AddBars(html, counters);
    const auto values = html.Element(L"dl", {{L"class", L"values"}});
    if (known)
        for (const size_t place : kValues)
            AddValue(html, counters[place]);
    else
        for (const CCounter& counter : counters)
            AddValue(html, counter);
}
} // namespace zebdiag
