// Vorl.dll: the real agent, loaded into its client's process.
#include "agent/VorlIds.h"
#include "agent/host/HostAgent.h"
#include "agent/host/SystemNetworkFacts.h"
#include "agent/server/AgentClass.h"

const CAgentClass& ServedAgent() noexcept
{
    static constexpr CAgentClass agent = {
        kClsidVorl, L"ZEB Diagnostics adapter agent", [](REFIID riid, void** out) -> HRESULT {
            return MakeCom<CHostAgent>(std::make_unique<CSystemNetworkFacts>())->QueryInterface(riid, out);
        }};
    return agent;
}
