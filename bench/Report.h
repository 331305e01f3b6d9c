// What the benchmark prints: figures with a table of lines each, a verdict on every line, and a summary. Each
// line appears as soon as it is known.
#pragma once

#include <map>
#include <string>
#include <vector>

struct CFigureTexts
{
    char Letter;
    const char* Title;
    const char* Measured;
    const char* Against;
    const char* Goal;
    const char* FirstColumn;
};

class CReport
{
  public:
    // Begins a figure; `columns` are those after the first.
    void Begin(const CFigureTexts& texts, const std::vector<std::string>& columns);
    // One line of the figure; one value per column.
    void Line(const std::string& name, const std::vector<std::string>& values, bool goalMet);
    void Summary() const;

  private:
    struct CFigure
    {
        const char* Title;
        int Lines = 0;
        int Met = 0;
    };

    char m_figure = '?';
    std::map<char, CFigure> m_figures;
};

std::string Fixed(double value, int decimals);
