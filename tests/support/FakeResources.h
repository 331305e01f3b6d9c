// Localised texts of a test's own, in place of resource libraries.
#pragma once

#include "CDM/src/ZebImpResourceMgr.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

class CFakeResources final : public CZebImpResourceMgr
{
  public:
    // What there is, by base name and number, in every language.
    std::map<std::pair<std::string, UINT>, std::string> Texts;
    // The locales that were asked for, in order.
    std::vector<LCID> Locales;

    std::string FindString(LCID locale, UINT id, const char* baseName) override
    {
        Locales.push_back(locale);
        const auto found = Texts.find({baseName, id});
        return found == Texts.end() ? std::string() : found->second;
    }
};
