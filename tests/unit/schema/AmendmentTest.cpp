// The schema's texts in other languages, as they ship: every text of the schema is there once, of the same
// kind, and nothing else is.
#include "tests/unit/schema/Amendment.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "tests/support/Languages.h"
#include "tests/support/ServedSchema.h"
#include "tests/support/TextFacts.h"

#include <gtest/gtest.h>

namespace
{
using namespace standin;

std::vector<std::wstring> Texts(const CQualifier& qualifier)
{
    if (qualifier.Value.vt == VT_BSTR)
        return {qualifier.Value.bstrVal};
    std::vector<std::wstring> texts;
    if (qualifier.Value.vt != (VT_ARRAY | VT_BSTR))
        return texts;
    const CSafeArrayView<BSTR> view(qualifier.Value.parray, VT_BSTR);
    for (const BSTR text : view.Items())
        texts.emplace_back(text, SysStringLen(text));
    return texts;
}

// Their texts are for people; all others are for programs.
constexpr const wchar_t* kTranslated[] = {L"Description", L"Values"};
// What an amendment needs besides to be one.
constexpr const wchar_t* kAllowed[] = {L"Key", L"In", L"Out", L"ID", L"CIMTYPE", L"Amendment", L"Locale"};

void CompareQualifiers(const std::string& of, const CQualifiers& base, const CQualifiers& amended)
{
    size_t translated = 0;
    for (const wchar_t* name : kTranslated)
    {
        const CQualifier* expected = base.Find(name);
        const CQualifier* found = amended.Find(name);
        EXPECT_EQ(expected != nullptr, found != nullptr) << of << ": " << NarrowText(name);
        if (!expected || !found)
            continue;
        ++translated;
        EXPECT_TRUE(found->Flavor & WBEM_FLAVOR_AMENDED) << of << ": " << NarrowText(name);
        const std::vector<std::wstring> texts = Texts(*found);
        const std::vector<std::wstring> english = Texts(*expected);
        ASSERT_EQ(english.size(), texts.size()) << of << ": " << NarrowText(name);
        for (size_t i = 0; i < texts.size(); ++i)
        {
            EXPECT_FALSE(texts[i].empty()) << of << ": " << NarrowText(name);
            EXPECT_EQ(FactsOf(english[i]), FactsOf(texts[i])) << of << ": " << Utf8Text(texts[i]);
        }
    }
    for (const wchar_t* name : {L"Key", L"In", L"Out"})
        EXPECT_EQ(base.IsTrue(name), amended.IsTrue(name)) << of << ": " << NarrowText(name);
    size_t allowed = 0;
    for (const wchar_t* name : kAllowed)
        allowed += amended.Find(name) != nullptr;
    EXPECT_EQ(amended.All().size(), translated + allowed) << of << " has a qualifier that is no text";
}

void CompareProperties(const std::string& of, const CClassDefinition& base, const CClassDefinition& amended)
{
    for (const auto& property : base.Properties())
    {
        if (!property.Local)
            continue;
        const std::string name = of + "." + NarrowText(property.Name);
        const CPropertyDefinition* found = amended.FindProperty(property.Name);
        ASSERT_TRUE(found) << name << " is missing";
        EXPECT_EQ(property.Type, found->Type) << name;
        EXPECT_STREQ(property.Qualifiers.Text(L"CIMTYPE"), found->Qualifiers.Text(L"CIMTYPE")) << name;
        CompareQualifiers(name, property.Qualifiers, found->Qualifiers);
    }
    for (const auto& property : amended.Properties())
    {
        const CPropertyDefinition* found = base.FindProperty(property.Name);
        EXPECT_TRUE(found && found->Local)
            << of << "." << NarrowText(property.Name) << " is not in the schema";
    }
}

void CompareMethods(const std::string& of, const CClassDefinition& base, const CClassDefinition& amended)
{
    for (const auto& method : base.Methods())
    {
        if (!method.Local)
            continue;
        const std::string name = of + "." + NarrowText(method.Name);
        const CMethodDefinition* found = amended.FindMethod(method.Name);
        ASSERT_TRUE(found) << name << " is missing";
        CompareQualifiers(name, method.Qualifiers, found->Qualifiers);
        ASSERT_TRUE(!method.In == !found->In && !method.Out == !found->Out) << name;
        if (method.In)
            CompareProperties(name, *method.In, *found->In);
        if (method.Out)
            CompareProperties(name, *method.Out, *found->Out);
    }
    for (const auto& method : amended.Methods())
    {
        const CMethodDefinition* found = base.FindMethod(method.Name);
        EXPECT_TRUE(found && found->Local) << of << "." << NarrowText(method.Name) << " is not in the schema";
    }
}

class AmendmentTest : public testing::TestWithParam<std::string>
{
};

TEST_P(AmendmentTest, HasTheTextsOfTheSchema)
{
    const CAmendment amendment(GetParam());
    size_t ours = 0;
    for (const ClassDefinition& base : ServedSchema().DerivedClasses(kServedNamespace, L""))
    {
        if (!base->Name.starts_with(L"Tolva_"))
            continue;
        ++ours;
        const std::string name = NarrowText(base->Name);
        const auto found = amendment.Classes.find(base->Name);
        ASSERT_NE(amendment.Classes.end(), found) << name << " is missing";
        CompareQualifiers(name, base->Qualifiers, found->second->Qualifiers);
        CompareProperties(name, *base, *found->second);
        CompareMethods(name, *base, *found->second);
    }
    EXPECT_LT(0u, ours);
    EXPECT_EQ(ours, amendment.Classes.size()) << "a class is not in the schema";
}

// The namespace, the class's own locale and the name of the file say the same.
TEST_P(AmendmentTest, IsOfOneLanguage)
{
    const CAmendment amendment(GetParam());
    constexpr std::wstring_view kFolder = L"\\\\.\\root\\cimv2\\ms_";
    ASSERT_TRUE(amendment.Namespace.starts_with(kFolder)) << NarrowText(amendment.Namespace);
    EXPECT_EQ(amendment.Namespace, amendment.MadeNamespace);
    const LCID locale = std::stoul(amendment.Namespace.substr(kFolder.size()), nullptr, 16);
    for (const auto& [name, definition] : amendment.Classes)
    {
        EXPECT_TRUE(definition->Qualifiers.IsTrue(L"Amendment")) << NarrowText(name);
        const CQualifier* told = definition->Qualifiers.Find(L"Locale");
        ASSERT_TRUE(told && told->Value.vt == VT_I4) << NarrowText(name);
        EXPECT_EQ(locale, static_cast<LCID>(told->Value.lVal)) << NarrowText(name);
    }
    char language[9] = {};
    GetLocaleInfoA(locale, LOCALE_SISO639LANGNAME, language, sizeof language);
    EXPECT_EQ("zebdiag-" + std::string(language) + ".mfl", GetParam());
}

TEST_P(AmendmentTest, IsRemovedAsAWhole)
{
    const CAmendment amendment(GetParam());
    const CAmendment removal(
        std::regex_replace(GetParam(), std::regex("^zebdiag-(.*)\\.mfl$"), "zebdiag-remove-$1.mof"));
    EXPECT_EQ(amendment.Namespace, removal.Namespace);
    EXPECT_EQ(removal.MadeNamespace, removal.Namespace);
    EXPECT_TRUE(removal.Classes.empty());
    auto left = amendment.Classes;
    for (const std::wstring& name : removal.Removed)
        EXPECT_EQ(1u, left.erase(name)) << NarrowText(name);
    EXPECT_TRUE(left.empty());
}

INSTANTIATE_TEST_SUITE_P(Languages, AmendmentTest, testing::ValuesIn(Listed(ZEB_SCHEMA_TEXTS)),
                         [](const auto& info)
                         { return std::regex_replace(info.param, std::regex("\\W"), "_"); });

// English texts are in the schema itself.
TEST(Amendments, EveryOtherLanguageHasOne)
{
    EXPECT_EQ(Listed(ZEB_LANGUAGES).size(), Listed(ZEB_SCHEMA_TEXTS).size() + 1);
}
} // namespace
