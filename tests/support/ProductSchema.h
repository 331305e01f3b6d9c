// The classes of the product on top of those of the management service, as a client finds them.
#pragma once

#include "Common/src/com/Text.h"
#include "standin/mof/Repository.h"

#include <string>

// Filled once per process. Throws standin::CMofError where a file is not as it should be.
inline const standin::CRepository& ProductSchema()
{
    static const auto repository = []
    {
        auto filled = std::make_unique<standin::CRepository>(L"WS42");
        for (const char* file :
             {"standin/mof/system.mof", "standin/mof/cimv2.mof", "resources/mof/zebdiag.mof"})
            filled->CompileFile(WidenUtf8(std::string(ZEB_SOURCE_DIR) + "/" + file));
        return filled;
    }();
    return *repository;
}
