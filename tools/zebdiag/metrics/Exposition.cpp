#include "tools/zebdiag/metrics/Exposition.h"

#include "Common/src/com/Text.h"

namespace zebdiag
{
namespace
{
std::string LabelValue(const std::wstring& value)
{
    std::string escaped;
    for (const char c : Utf8Text(value))
        if (c == '\\' || c == '"')
            escaped += {'\\', c};
        else if (c == '\n')
            escaped += "\\n";
        else
            // Collectors drop some control characters, and two values could become one.
            escaped += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    return escaped;
}
} // namespace

void CExposition::Begin(const char* name, const char* unit, const char* help)
{
    m_name = name;
    m_heading = "# HELP " + m_name + " " + help + "\n# TYPE " + m_name + " gauge\n";
    if (unit)
        m_heading += "# UNIT " + m_name + " " + unit + "\n";
}

void CExposition::Add(const MetricLabels& labels, const std::string& value)
{
    m_text += m_heading + m_name;
    m_heading.clear();
    for (const CMetricLabel& label : labels)
        m_text += (&label == &labels.front() ? "{" : ",") + std::string(label.Name) + "=\"" +
                  LabelValue(label.Value) + "\"";
    m_text += (labels.empty() ? " " : "} ") + value + "\n";
}

std::string MetricValue(unsigned long long value, unsigned places)
{
    std::string digits = std::to_string(value);
    if (places == 0)
        return digits;
    if (digits.size() <= places)
        digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, ".");
    return digits;
}
} // namespace zebdiag
