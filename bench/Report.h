// What the benchmark prints: figures with a table of lines each, a verdict on every line, and a summary. Each
// line appears as soon as it is known.
#pragma once

#include <map>
#include <string>
#include <vector>

class CReport
{
  public:
    // Begins a figure: its letter, what is measured against what and which goal it has, the names of the
    // columns after the first.
    void Begin(char figure, const std::string& title, const std::string& firstColumn,
               const std::vector<std::string>& columns);
    // One line of the figure; one value per column.
    void Line(const std::string& name, const std::vector<std::string>& values, bool goalMet);
    // True where every line of every figure met its goal.
    bool Summary() const;

  private:
    char m_figure = '?';
    std::map<char, bool> m_met;
};

std::string Fixed(double value, int decimals);
