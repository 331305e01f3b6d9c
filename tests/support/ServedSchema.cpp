#include "tests/support/ServedSchema.h"

#include "Common/src/com/Text.h"

namespace
{
std::wstring SourceFile(const char* relative)
{
    return WidenUtf8(std::string(ZEB_SOURCE_DIR "/") + relative);
}
} // namespace

standin::CRepository& ServedSchema()
{
    static standin::CRepository repository(L"TESTHOST");
    static const bool compiled = []
    {
        for (const char* file :
             {"standin/mof/system.mof", "standin/mof/cimv2.mof", "resources/mof/zebdiag.mof"})
            repository.CompileFile(SourceFile(file));
        return true;
    }();
    (void)compiled;
    return repository;
}

ComPtr<CFakeServices> MakeServedNamespace(CallPlan plan)
{
    return MakeCom<CFakeServices>(
        [plan](const std::wstring& path) -> ComPtr<IWbemClassObject>
        {
            ComPtr<IWbemClassObject> definition = ServedSchema().GetClass(kServedNamespace, path);
            return definition ? MakeCom<CFailingClassObject>(definition, plan) : nullptr;
        });
}
