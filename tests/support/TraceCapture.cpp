#include "tests/support/TraceCapture.h"

#include "CDM/src/ZebDebug.h"
#include "tests/support/RegistryScope.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace
{
// The process's trace file, closed and removed at the end of the process.
class CTraceFile
{
  public:
    CTraceFile()
    {
        char folder[MAX_PATH + 1] = {};
        GetTempPathA(MAX_PATH, folder);
        m_path = std::string(folder) + "zeb-test-" + std::to_string(GetCurrentProcessId()) + ".log";
        DeleteFileA(m_path.c_str());
    }
    // Also again after a test that closed the trace.
    void Open(long level = 2) const
    {
        if (ZebDebug().Level() >= 2)
            return;
        // An empty registry: the machine's own settings would move the file.
        const CRegistryScope registry;
        if (ZebDebug().Configure("test", m_path.c_str(), level, 0, true, 0) != 0)
            throw std::runtime_error("the trace of the test could not be opened: " + m_path);
    }
    ~CTraceFile()
    {
        ZebDebug().Close();
        DeleteFileA(m_path.c_str());
    }
    size_t Size() const
    {
        std::ifstream file(m_path, std::ios::binary | std::ios::ate);
        return static_cast<size_t>(file.tellg());
    }
    std::string TextFrom(size_t start) const
    {
        std::ifstream file(m_path, std::ios::binary);
        file.seekg(static_cast<std::streamoff>(start));
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string m_path;
};

const CTraceFile& TraceFile()
{
    static const CTraceFile file;
    return file;
}

// "[1a2c] 09:05:07.042 message": the message starts behind the second blank.
std::string WithoutPrefix(const std::string& line)
{
    if (line.empty() || line[0] != '[')
        return line;
    const size_t time = line.find(' ');
    const size_t message = time == std::string::npos ? time : line.find(' ', time + 1);
    return message == std::string::npos ? line : line.substr(message + 1);
}
} // namespace

CTraceCapture::CTraceCapture()
{
    TraceFile().Open();
    m_start = TraceFile().Size();
}

void CTraceCapture::SetLevel(long level)
{
    ZebDebug().Close();
    TraceFile().Open(level);
}

std::string CTraceCapture::Text() const
{
    return TraceFile().TextFrom(m_start);
}

std::vector<std::string> CTraceCapture::Lines() const
{
    const std::string text = Text();
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();)
    {
        const size_t end = std::min(text.find("\r\n", at), text.size());
        if (end > at)
            lines.push_back(WithoutPrefix(text.substr(at, end - at)));
        at = end + 2;
    }
    return lines;
}

size_t CTraceCapture::Count(std::string_view text) const
{
    const std::vector<std::string> lines = Lines();
    return static_cast<size_t>(std::count_if(lines.begin(), lines.end(),
                                             [&](const std::string& line)
                                             { return line.find(text) != std::string::npos; }));
}
