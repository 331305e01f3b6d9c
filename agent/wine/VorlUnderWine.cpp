// VorlUnderWine.dll: the real agent as it is tried and demonstrated under Wine. It does not ship.
#include "agent/VorlIds.h"
#include "agent/host/HostAgent.h"
#include "agent/host/SystemNetworkFacts.h"
#include "agent/server/AgentClass.h"
#include "agent/wine/WineOnly.h"

const CAgentClass& ServedAgent() noexcept
{
    static constexpr CAgentClass agent = {
        kClsidVorl, L"ZEB Diagnostics adapter agent for development",
        [](REFIID riid, void** out) -> HRESULT
        {
            return MakeCom<CHostAgent>(std::make_unique<CSystemNetworkFacts>(IsWiredUnderWine))
                ->QueryInterface(riid, out);
        }};
    return agent;
}
