// A look at a structured-storage file before the system opens it. The system follows the file's sector chains
// and directory links as they stand: a damaged file can hold it in a circle for ever.
#pragma once

// Whether every chain and every link that leads to a stored value ends, and ends inside the file. False also
// where the file cannot be read.
bool IsSoundCompoundFile(const wchar_t* path);
