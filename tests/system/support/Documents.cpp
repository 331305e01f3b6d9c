#include "tests/system/support/Documents.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace
{
constexpr DWORD kNotUnderstood = 7;

// One folder for each test program.
std::filesystem::path EmptyFolder()
{
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::filesystem::path path(program);
    std::filesystem::path folder = path.parent_path().parent_path() / L"documents" / path.stem();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}
} // namespace

void KeepDocument(const std::string& document)
{
    static const std::filesystem::path folder = EmptyFolder();
    static std::atomic<unsigned> count = 0;
    std::ofstream file(folder / (std::to_wstring(++count) + L".json"), std::ios::binary);
    file << document;
    if (!file.flush())
        throw std::runtime_error("a document could not be kept");
}

void KeepPrintedDocument(const std::wstring& commandLine, const CRunResult& result)
{
    if (commandLine.find(L" --json") != std::wstring::npos && result.ExitCode != kNotUnderstood)
        KeepDocument(result.Output);
}
