#include "tests/support/ServedSchema.h"

#include "Common/src/com/Text.h"

namespace
{
std::wstring BuiltFile(const char* name)
{
    return WidenUtf8(std::string(ZEB_BIN_DIR "/") + name);
}
} // namespace

standin::CRepository& ServedSchema()
{
    static standin::CRepository repository(L"TESTHOST");
    static const bool compiled = []
    {
        for (const char* file : {"system.mof", "cimv2.mof", "zebdiag.mof"})
            repository.CompileFile(BuiltFile(file));
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
