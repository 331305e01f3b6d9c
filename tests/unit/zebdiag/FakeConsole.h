// A console that keeps what is written.
#pragma once

#include "tools/zebdiag/Console.h"

#include <functional>
#include <gtest/gtest.h>

namespace zebdiag
{
class CFakeConsole final : public IConsole
{
  public:
    void Out(std::wstring_view text) override { Output += text; }
    void Err(std::wstring_view text) override { Errors += text; }
    unsigned long OutError() const override { return OutputError; }
    bool OutIsTerminal() const override { return OutputIsWatched; }
    bool ErrIsTerminal() const override { return ErrorsAreWatched; }
    unsigned Width() const override { return Columns; }
    unsigned ErrWidth() const override { return Columns; }
    unsigned Height(Stream) const override { return Lines; }
    bool Colours() const override { return Coloured; }
    void Redraw(Stream stream, const std::vector<CScreenLine>& lines) override
    {
        EXPECT_EQ(stream, OutputIsWatched ? Stream::Out : Stream::Err);
        // What else is written would stand in the middle of what was drawn.
        EXPECT_TRUE(Frames.empty() || Frames.back().empty() || Output.size() + Errors.size() == m_written);
        Frames.push_back(lines);
        OnRedraw(lines);
        m_written = Output.size() + Errors.size();
    }
    std::wstring AskPassword(const std::wstring& prompt) override
    {
        Asked += prompt;
        return L"secret";
    }

    unsigned Columns = 0;
    unsigned Lines = 0;
    unsigned long OutputError = 0;
    bool OutputIsWatched = false;
    bool ErrorsAreWatched = false;
    bool Coloured = true;
    std::vector<std::vector<CScreenLine>> Frames;
    std::function<void(const std::vector<CScreenLine>&)> OnRedraw = [](const std::vector<CScreenLine>&) {};
    std::wstring Output;
    std::wstring Errors;
    std::wstring Asked;

  private:
    size_t m_written = 0; // when it was drawn
};
} // namespace zebdiag
