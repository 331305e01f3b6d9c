// Why a MOF text was refused, and where.
#pragma once

#include <stdexcept>
#include <string>

namespace standin
{
class CMofError : public std::runtime_error
{
  public:
    // `reason` is a sentence without the place; what() is "file(line,column): reason".
    CMofError(const std::string& source, size_t line, size_t column, const std::string& reason)
        : std::runtime_error(source + "(" + std::to_string(line) + "," + std::to_string(column) +
                             "): " + reason),
          Line(line), Column(column)
    {
    }

    size_t Line;
    size_t Column; // both count from 1
};
} // namespace standin
