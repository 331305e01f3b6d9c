#include "tests/support/TempFolder.h"

#include <string>
#include <windows.h>

CTempFolder::CTempFolder()
{
    static int s_made = 0;
    m_path = std::filesystem::temp_directory_path() /
             ("zeb-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++s_made));
    std::filesystem::create_directories(m_path);
}

CTempFolder::~CTempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}
