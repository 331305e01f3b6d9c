// The languages, or files of languages, that the build has found and names as "DEU,ENU".
#pragma once

#include <sstream>
#include <string>
#include <vector>

inline std::vector<std::string> Listed(const char* names)
{
    std::vector<std::string> all;
    std::istringstream left(names);
    for (std::string name; std::getline(left, name, ',');)
        all.push_back(name);
    return all;
}
