// Where the debug trace goes.
#pragma once

#include <string>

// The path of the log for a file name: the registry can ask for one file per process and names the folder
// that holds "DebugLog". Throws std::bad_alloc only.
std::string ZebDebugPath(const std::string& fileName);
