// The schema that the stand-in starts with, and the product's own on top of it.
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/mof/Repository.h"
#include "standin/object/ClassDefinition.h"

#include <gtest/gtest.h>

using namespace standin;

namespace
{
constexpr const wchar_t* kCimv2 = L"root\\cimv2";

std::wstring SourceFile(const char* name)
{
    return WidenUtf8(std::string(ZEB_SOURCE_DIR) + "/" + name);
}

void CompileProduct(CRepository& repository)
{
    repository.CompileFile(SourceFile("standin/mof/system.mof"));
    repository.CompileFile(SourceFile("standin/mof/cimv2.mof"));
    repository.CompileFile(SourceFile("resources/mof/zebdiag.mof"));
}
} // namespace

TEST(Schema, TheProductsClassesCompile)
{
    CRepository repository(L"PC");
    ASSERT_NO_THROW(CompileProduct(repository));
    const ClassDefinition test = repository.GetDefinition(kCimv2, L"tolva_diagtest");
    ASSERT_TRUE(test);
    EXPECT_EQ(test->Name, L"Tolva_DiagTest");
    EXPECT_TRUE(test->InheritsFrom(L"CIM_Service"));
    EXPECT_EQ(test->Keys()->size(), 1u);
    EXPECT_STREQ(test->Qualifiers.Text(L"provider"), L"DREVOK_PROVIDER");
    ASSERT_TRUE(test->FindMethod(L"RunTest"));
    EXPECT_EQ(test->FindProperty(L"Characteristics")->Type, CIM_UINT16 | CIM_FLAG_ARRAY);
}

TEST(Schema, TheProductsProviderIsFound)
{
    CRepository repository(L"PC");
    CompileProduct(repository);
    const auto provider = repository.FindProvider(L"ROOT/CIMV2", L"drevok_provider");
    ASSERT_TRUE(provider);
    EXPECT_EQ(provider->Name, L"DREVOK_PROVIDER");
    EXPECT_FALSE(provider->Clsid.empty());
    EXPECT_TRUE(provider->ServesInstances && provider->SupportsGet && provider->SupportsPut &&
                provider->SupportsEnumeration && provider->ServesMethods);
    EXPECT_FALSE(provider->SupportsDelete);
}
