#include "tests/support/TraceMarks.h"

#include <map>

namespace
{
constexpr std::string_view kHeading[] = {"<center><h1>ZebDiag</h1></center>", "<xmp>"};
constexpr std::string_view kTime = "dd:dd:dd.ddd "; // d stands for a digit
constexpr std::string_view kEntry = "{ --> ";
constexpr std::string_view kExit = "} <-- ";

struct CLine
{
    std::string_view Thread;
    std::string_view Message;
};

bool IsTime(std::string_view text)
{
    if (text.size() < kTime.size())
        return false;
    for (size_t i = 0; i < kTime.size(); ++i)
        if (kTime[i] == 'd' ? text[i] < '0' || text[i] > '9' : text[i] != kTime[i])
            return false;
    return true;
}

// "[1a2c] 09:05:07.042 message"
bool Split(std::string_view line, CLine& parts)
{
    const size_t end = line.find("] ");
    if (!line.starts_with('[') || end == std::string_view::npos || end < 2 ||
        line.substr(1, end - 1).find_first_not_of("0123456789abcdef") != std::string_view::npos ||
        !IsTime(line.substr(end + 2)))
        return false;
    parts = {line.substr(1, end - 1), line.substr(end + 2 + kTime.size())};
    return true;
}

// Whether another line's beginning stands in the message.
bool HoldsAnotherLine(std::string_view message)
{
    for (size_t at = message.find("] "); at != std::string_view::npos; at = message.find("] ", at + 1))
        if (IsTime(message.substr(at + 2)))
            return true;
    return false;
}

class CMarks
{
  public:
    void Take(std::string_view line)
    {
        for (const std::string_view heading : kHeading)
            if (line == heading)
                return;
        CLine parts;
        if (!Split(line, parts) || HoldsAnotherLine(parts.Message))
            return Complain("torn line", line);
        const size_t indent = std::min(parts.Message.find_first_not_of(' '), parts.Message.size());
        const std::string_view mark = parts.Message.substr(indent);
        std::vector<std::string>& open = m_open[std::string(parts.Thread)];
        if (mark.starts_with(kEntry))
        {
            ++Findings.Marks;
            // One blank separates the indentation from the mark.
            if (indent != open.size() * 4 + m_separator)
                Complain("entry at a wrong depth", line);
            open.emplace_back(mark.substr(kEntry.size()));
        }
        else if (mark.starts_with(kExit))
        {
            ++Findings.Marks;
            if (open.empty() || open.back() != mark.substr(kExit.size()))
                return Complain("exit without its entry", line);
            open.pop_back();
            if (indent != open.size() * 4 + m_separator)
                Complain("exit at a wrong depth", line);
        }
    }
    void End()
    {
        for (const auto& [thread, names] : m_open)
            if (!names.empty())
                Complain("thread " + thread + " never left", names.back());
    }

    CTraceFindings Findings;

  private:
    void Complain(const std::string& what, std::string_view line)
    {
        Findings.Faults.push_back(what + ": " + std::string(line));
    }

    static constexpr size_t m_separator = 1;
    std::map<std::string, std::vector<std::string>> m_open;
};
} // namespace

CTraceFindings CheckTrace(std::string_view text)
{
    CMarks marks;
    for (size_t at = 0; at < text.size();)
    {
        const size_t end = std::min(text.find('\n', at), text.size());
        std::string_view line = text.substr(at, end - at);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        marks.Take(line);
        at = end + 1;
    }
    marks.End();
    return std::move(marks.Findings);
}
