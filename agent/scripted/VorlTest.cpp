// VorlTest.dll: the test agent, loaded into its client's process.
#include "agent/VorlIds.h"
#include "agent/scripted/ScriptSource.h"
#include "agent/scripted/ScriptedAgent.h"
#include "agent/server/AgentClass.h"

const CAgentClass& ServedAgent() noexcept
{
    static constexpr CAgentClass agent = {
        kClsidVorlTest, L"ZEB Diagnostics test agent (scripted)", [](REFIID riid, void** out) -> HRESULT {
            return MakeCom<CScriptedAgent>(LoadScript, ScriptedThrow::RaisesException)
                ->QueryInterface(riid, out);
        }};
    return agent;
}
