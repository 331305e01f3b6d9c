// What the code under test writes to the trace. The first object made in a test process opens the process's
// trace at level 2 into a temporary file; each object sees the lines written since it was made, by any
// thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class CTraceCapture
{
  public:
    CTraceCapture();

    // From level 3 on everything is written but the dumps of objects, which cost the most. 2 is what the
    // trace is opened with.
    static void SetLevel(long level);

    // As it stands in the file.
    std::string Text() const;
    // The messages, without the "[thread] time " in front of them but with their indentation.
    std::vector<std::string> Lines() const;
    // How many lines contain the text, and whether any does.
    size_t Count(std::string_view text) const;
    bool Has(std::string_view text) const { return Count(text) > 0; }

  private:
    size_t m_start;
};
