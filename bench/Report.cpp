#include "bench/Report.h"

#include <cstdio>

namespace
{
constexpr int kTitleWidth = 44;
constexpr int kNameWidth = 30;
constexpr int kValueWidth = 11;

const char* Verdict(bool met)
{
    return met ? "met" : "MISSED";
}
} // namespace

void CReport::Begin(const CFigureTexts& texts, const std::vector<std::string>& columns)
{
    m_figure = texts.Letter;
    m_figures.try_emplace(m_figure, CFigure{texts.Title});
    std::printf("\n(%c) %s\n", texts.Letter, texts.Title);
    std::printf("    measured  %s\n    against   %s\n    goal      %s\n\n", texts.Measured, texts.Against,
                texts.Goal);
    std::printf("    %-*s", kNameWidth, texts.FirstColumn);
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
    CFigure& figure = m_figures.at(m_figure);
    ++figure.Lines;
    figure.Met += goalMet;
}

void CReport::Summary() const
{
    std::printf("\nSummary\n");
    for (const auto& [letter, figure] : m_figures)
        std::printf("    (%c) %-*s%s, %d of %d lines\n", letter, kTitleWidth, figure.Title,
                    Verdict(figure.Met == figure.Lines), figure.Met, figure.Lines);
    std::printf("    bench/README.md says what the figures mean and why a goal is missed.\n");
}

std::string Fixed(double value, int decimals)
{
    char text[64];
    _snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}
