// Where the program writes and asks. Standard output takes the data, standard error the rest.
#pragma once

#include "tools/zebdiag/ScreenLine.h"

#include <string>
#include <string_view>
#include <vector>

namespace zebdiag
{
enum class Stream
{
    Out,
    Err
};

class IConsole
{
  public:
    virtual ~IConsole() = default;

    virtual void Out(std::wstring_view text) = 0;
    virtual void Err(std::wstring_view text) = 0;
    // The system's code for the first loss of what was to go to standard output; 0 if nothing was lost. What
    // a reader does not want any more is no loss.
    virtual unsigned long OutError() const = 0;
    // True where a person watches the stream, so that a line may be drawn over.
    virtual bool OutIsTerminal() const = 0;
    virtual bool ErrIsTerminal() const = 0;
    // The width of the terminal in characters; 0 where output is not to be cut into lines.
    virtual unsigned Width() const = 0;
    // The same of standard error.
    virtual unsigned ErrWidth() const = 0;
    // The height of the stream's terminal in lines; 0 if it is none.
    virtual unsigned Height(Stream stream) const = 0;
    // False if whoever runs the program wants none (the variable NO_COLOR).
    virtual bool Colours() const = 0;
    // Puts lines in place of those of the call before, on a terminal. Nothing else may have been written
    // since, unless the call before gave no lines.
    virtual void Redraw(Stream stream, const std::vector<CScreenLine>& lines) = 0;
    // Asks without showing what is typed.
    virtual std::wstring AskPassword(const std::wstring& prompt) = 0;
};

// The process's own streams: the terminal in its own characters, files and pipes in UTF-8.
IConsole& ProcessConsole();
} // namespace zebdiag
