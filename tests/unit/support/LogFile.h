// A trace of the test's own in a folder of its own, and what stands in its file.
#pragma once

#include "CDM/src/ZebDebug.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Exactly as on disk.
inline std::string FileText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Without the line ends.
inline std::vector<std::string> FileLines(const std::string& path)
{
    const std::string text = FileText(path);
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();)
    {
        const size_t end = std::min(text.find("\r\n", at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 2;
    }
    return lines;
}

// The length of "[thread] 09:05:07.042 " for lines of this thread.
inline size_t PrefixLength()
{
    char thread[16] = {};
    return static_cast<size_t>(
        _snprintf(thread, sizeof(thread), "[%x] ", static_cast<unsigned>(GetCurrentThreadId())) + 13);
}

struct CLogFile
{
    explicit CLogFile(long level, DWORD maxSize = 0)
    {
        Result = Log.Configure("ZebDiag", Path().c_str(), level, 0, false, maxSize);
    }
    std::string Path() const { return Folder.File("trace.log"); }
    std::string Text() const { return FileText(Path()); }
    // The lines below the two of the heading.
    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines = FileLines(Path());
        lines.erase(lines.begin(), lines.begin() + std::min<ptrdiff_t>(2, std::ssize(lines)));
        return lines;
    }
    // The messages of those lines, all written by this thread.
    std::vector<std::string> Messages() const
    {
        std::vector<std::string> lines = Lines();
        for (std::string& line : lines)
            line = line.size() < PrefixLength() ? line : line.substr(PrefixLength());
        return lines;
    }

    CRegistryScope Registry;
    CTempFolder Folder;
    CZebDebug Log;
    long Result = -1;
};
