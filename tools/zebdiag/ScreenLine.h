// A line of a terminal in pieces that have a colour each.
#pragma once

#include <string>
#include <vector>

namespace zebdiag
{
enum class Colour
{
    Plain,
    Green,
    Yellow,
    Red
};

struct CPiece
{
    std::wstring Text;
    Colour InColour = Colour::Plain;
};

using CScreenLine = std::vector<CPiece>;
} // namespace zebdiag
