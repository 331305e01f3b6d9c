// Turns an error code of the adapter agent, or of the system, into text for people.
#pragma once

#include <string>
#include <windows.h>

class CZebImpResourceMgr;

// Codes of the agent have their texts in the "_8023" libraries, all others in the system's message tables.
// The system may have none in the language of `locale`; `text` then stays as it is. A text that is still
// empty becomes the libraries' string 100 with the code in it. Throws std::bad_alloc.
void FormatVorlErrorMessage(HRESULT hr, std::string& text, CZebImpResourceMgr& resources, LCID locale);
