// Metrics as text. The format is OpenMetrics, and of that only what the older text format has as well, so
// that a server that asks for either and an exporter's textfile collector can read the same file.
#pragma once

#include <string>
#include <vector>

namespace zebdiag
{
struct CMetricLabel
{
    const char* Name;
    std::wstring Value;
};
using MetricLabels = std::vector<CMetricLabel>;

// Samples of one metric after the other, each metric with its type, unit and description.
class CExposition
{
  public:
    // `unit` is null for a pure number; otherwise the name ends with it. A metric without samples is left
    // out.
    void Begin(const char* name, const char* unit, const char* help);
    void Add(const MetricLabels& labels, const std::string& value);
    // Everything, up to the mark of its end.
    std::string Text() const { return m_text + "# EOF\n"; }

  private:
    std::string m_text;
    std::string m_name;
    std::string m_heading; // of the metric, until it has a sample
};

// The value shifted by that many decimal places: "0.000688" for 688 and 6.
std::string MetricValue(unsigned long long value, unsigned places = 0);
} // namespace zebdiag
