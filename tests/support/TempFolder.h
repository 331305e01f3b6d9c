// A fresh folder below the temporary one, removed with everything in it at the end.
#pragma once

#include <filesystem>

class CTempFolder
{
  public:
    CTempFolder();
    ~CTempFolder();
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    // A file's path as ANSI text, as the registry and narrow interfaces take it.
    std::string File(const char* name) const { return (m_path / name).string(); }

  private:
    std::filesystem::path m_path;
};
