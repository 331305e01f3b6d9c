// Looks at a whole trace for what no run of the product may leave in it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct CTraceFindings
{
    size_t Marks = 0;                // entries and exits
    std::vector<std::string> Faults; // what is wrong, with the line
};

// `text` is what stands in the file, or a part of it that begins with a line. Every line must begin with its
// thread and time, no line may stand inside another, and in each thread every exit must close the entry that
// was opened last, at the indentation of its depth, until none is open.
CTraceFindings CheckTrace(std::string_view text);
