// A console that keeps what is written.
#pragma once

#include "tools/zebdiag/Console.h"

namespace zebdiag
{
class CFakeConsole final : public IConsole
{
  public:
    void Out(std::wstring_view text) override { Output += text; }
    void Err(std::wstring_view text) override { Errors += text; }
    bool OutIsTerminal() const override { return false; }
    bool ErrIsTerminal() const override { return ErrorsAreWatched; }
    unsigned Width() const override { return Columns; }
    unsigned ErrWidth() const override { return Columns; }
    std::wstring AskPassword(const std::wstring& prompt) override
    {
        Asked += prompt;
        return L"secret";
    }

    unsigned Columns = 0;
    bool ErrorsAreWatched = false;
    std::wstring Output;
    std::wstring Errors;
    std::wstring Asked;
};
} // namespace zebdiag
