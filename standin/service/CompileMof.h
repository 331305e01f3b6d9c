// What "mofcomp" is elsewhere.
#pragma once

#include <string>
#include <vector>

namespace standin
{
// Compiles the files on top of those that are remembered already and, where all of them are accepted,
// remembers them too; a file that is remembered keeps its place. What is wrong goes to standard error as
// "file(line,column): reason". Returns the exit code: 0, or 1 where nothing was changed.
int CompileMof(const std::vector<std::wstring>& files);
} // namespace standin
