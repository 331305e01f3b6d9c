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
             {ZEB_SOURCE_DIR "/standin/mof/system.mof", ZEB_SOURCE_DIR "/resources/mof/cimv2.mof",
              ZEB_SOURCE_DIR "/resources/mof/zebdiag.mof"})
            filled->CompileFile(WidenUtf8(file));
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
