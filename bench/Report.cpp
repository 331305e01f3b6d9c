#include "bench/Report.h"

#include <cstdio>

namespace
{
constexpr int kNameWidth = 34;
constexpr int kValueWidth = 12;

const char* Verdict(bool met)
{
    return met ? "goal met" : "GOAL MISSED";
}
} // namespace

void CReport::Begin(char figure, const std::string& title, const std::string& firstColumn,
                    const std::vector<std::string>& columns)
{
    m_figure = figure;
    m_met.try_emplace(figure, true);
    std::printf("\n(%c) %s\n    %-*s", figure, title.c_str(), kNameWidth, firstColumn.c_str());
    for (const std::string& column : columns)
        std::printf("%*s", kValueWidth, column.c_str());
    std::printf("\n");
    std::fflush(stdout);
}

void CReport::Line(const std::string& name, const std::vector<std::string>& values, bool goalMet)
{
    std::printf("    %-*s", kNameWidth, name.c_str());
    for (const std::string& value : values)
        std::printf("%*s", kValueWidth, value.c_str());
    std::printf("   %s\n", Verdict(goalMet));
    std::fflush(stdout);
    m_met[m_figure] = m_met[m_figure] && goalMet;
}

bool CReport::Summary() const
{
    bool all = true;
    std::printf("\nSummary:");
    const char* separator = " ";
    for (const auto& [figure, met] : m_met)
    {
        std::printf("%s(%c) %s", separator, figure, Verdict(met));
        separator = ", ";
        all = all && met;
    }
    std::printf("\n");
    return all;
}

std::string Fixed(double value, int decimals)
{
    char text[64];
    _snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}
