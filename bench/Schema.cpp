#include "bench/Schema.h"

#include "Common/src/com/Text.h"
#include "standin/mof/Repository.h"
#include "tests/support/FakeServices.h"

namespace
{
constexpr wchar_t kNamespace[] = L"root\\cimv2";

const standin::CRepository& Repository()
{
    static standin::CRepository& repository = *[]
    {
        auto* const filled = new standin::CRepository(L"BENCH");
        for (const char* file :
             {"standin/mof/system.mof", "standin/mof/cimv2.mof", "resources/mof/zebdiag.mof"})
            filled->CompileFile(WidenUtf8(std::string(ZEB_SOURCE_DIR) + "/" + file));
        return filled;
    }();
    return repository;
}
} // namespace

ComPtr<IWbemClassObject> ClassNamed(const std::wstring& name)
{
    return Repository().GetClass(kNamespace, name);
}

ComPtr<IWbemServices> MakeNamespace(const DressClass& dress)
{
    return MakeCom<CFakeServices>(
        [&dress](const std::wstring& path)
        {
            ComPtr<IWbemClassObject> definition = ClassNamed(path);
            return definition && dress ? dress(std::move(definition)) : definition;
        });
}
