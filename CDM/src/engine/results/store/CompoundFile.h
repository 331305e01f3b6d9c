// A look at a structured-storage file before the system opens it. The system follows the file's sector chains
// and directory links as they stand: a damaged file can hold it in a circle for ever.
#pragma once

#include <string_view>

// Whether every chain and every link that leads to a stored value ends, and ends inside the file. Throws
// std::bad_alloc.
bool IsSoundCompoundFile(std::string_view bytes);
