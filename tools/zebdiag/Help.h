// The help, as the parser has it shown.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zebdiag
{
// Writes the help for a terminal of `width` columns; 0 leaves lines whole.
class CHelpFormatter : public CLI::FormatterBase
{
  public:
    explicit CHelpFormatter(unsigned width) noexcept : m_width(width) {}

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;

  private:
    const unsigned m_width;
};

// What the program's help says below its commands.
std::wstring HelpFooter(unsigned width);
} // namespace zebdiag
