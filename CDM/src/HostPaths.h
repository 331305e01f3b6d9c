// Where the server keeps its files. Filled by the server process at start-up and handed down.
#pragma once

#include <string>

struct CHostPaths
{
    std::string InstallDir;       // carries its own trailing backslash: file names are appended as they are
    std::wstring ResultStorePath; // the file that results are kept in between two runs of the process
};
