// Every language has the texts that English has, fit for the same use.
#include "tests/unit/resources/Library.h"

#include "Common/src/com/Text.h"
#include "tests/support/Languages.h"
#include "tests/support/TextFacts.h"

#include <gtest/gtest.h>
#include <set>

namespace
{
constexpr const char* kLibraries[] = {"_NWR", "_8023", "Diag"};
constexpr UINT kNumbers = 0x10000;

BOOL CALLBACK AddLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR found)
{
    reinterpret_cast<std::set<WORD>*>(found)->insert(language);
    return TRUE;
}

std::set<WORD> LanguagesIn(HMODULE library)
{
    std::set<WORD> found;
    for (UINT block = 1; block <= kNumbers / 16; ++block)
        EnumResourceLanguagesW(library, MAKEINTRESOURCEW(6), MAKEINTRESOURCEW(block), AddLanguage,
                               reinterpret_cast<LONG_PTR>(&found));
    return found;
}

std::wstring WideText(HMODULE library, UINT id)
{
    const wchar_t* text = nullptr; // into the library, without an end of its own
    const int length = LoadStringW(library, id, reinterpret_cast<wchar_t*>(&text), 0);
    return length > 0 ? std::wstring(text, static_cast<size_t>(length)) : std::wstring();
}

class LanguageTest : public testing::TestWithParam<std::string>
{
  protected:
    static std::string File(const char* library) { return GetParam() + library + ".dll"; }
    // The language that the texts themselves say they are in.
    static LCID Locale(HMODULE library)
    {
        const std::set<WORD> languages = LanguagesIn(library);
        EXPECT_EQ(1u, languages.size());
        return languages.empty() ? 0 : MAKELCID(*languages.begin(), SORT_DEFAULT);
    }
};

TEST_P(LanguageTest, HasTheTextsOfEnglish)
{
    for (const char* name : kLibraries)
    {
        HMODULE english = Library(std::string("ENU") + name + ".dll");
        HMODULE library = Library(File(name));
        ASSERT_TRUE(english && library) << File(name);
        for (UINT id = 0; id < kNumbers; ++id)
        {
            const std::wstring expected = WideText(english, id);
            const std::wstring text = WideText(library, id);
            EXPECT_TRUE(expected.empty() || !text.empty()) << File(name) << " has no text " << id << " (0x"
                                                           << std::hex << id << "): " << Utf8Text(expected);
            EXPECT_TRUE(!expected.empty() || text.empty())
                << File(name) << " has a text " << id << " (0x" << std::hex << id
                << ") that English has not: " << Utf8Text(text);
            if (!expected.empty() && !text.empty())
            {
                EXPECT_EQ(FactsOf(expected), FactsOf(text))
                    << File(name) << " " << id << " (0x" << std::hex << id << "): " << Utf8Text(text);
            }
        }
    }
}

TEST_P(LanguageTest, IsThatOfItsFolder)
{
    for (const char* name : kLibraries)
    {
        char language[9] = {};
        GetLocaleInfoA(Locale(Library(File(name))), LOCALE_SABBREVLANGNAME, language, sizeof language);
        EXPECT_EQ(GetParam(), language) << File(name);
    }
}

// Texts reach clients through it.
TEST_P(LanguageTest, StaysWithinItsCodePage)
{
    for (const char* name : kLibraries)
    {
        HMODULE library = Library(File(name));
        const LCID locale = Locale(library);
        DWORD codePage = 0;
        GetLocaleInfoA(locale, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                       reinterpret_cast<char*>(&codePage), sizeof codePage);
        for (UINT id = 0; id < kNumbers; ++id)
        {
            const std::string narrow = LoadZebString(library, id, locale);
            std::wstring wide(narrow.size(), L'\0');
            wide.resize(static_cast<size_t>(MultiByteToWideChar(codePage, 0, narrow.data(),
                                                                static_cast<int>(narrow.size()), wide.data(),
                                                                static_cast<int>(wide.size()))));
            EXPECT_EQ(WideText(library, id), wide) << File(name) << " " << id;
        }
    }
}

// The provider reserves a fixed room for one line of a result: time, title and text together.
TEST_P(LanguageTest, HasNoTextThatIsTooLongForAResultLine)
{
    HMODULE library = Library(File("_8023"));
    const LCID locale = Locale(library);
    for (UINT id = 0; id < kNumbers; ++id)
        EXPECT_LT(LoadZebString(library, id, locale).size(), 1000u) << id;
}

TEST_P(LanguageTest, HasANameOfItsOwnForEachTest)
{
    HMODULE library = Library(File("_8023"));
    std::set<std::wstring> names;
    for (UINT id = 3500; id <= 3515; ++id)
        EXPECT_TRUE(names.insert(WideText(library, id)).second) << id;
}

TEST_P(LanguageTest, HasCounterLabelsThatANumberCanFollow)
{
    for (UINT id : {0, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13})
        EXPECT_TRUE(WideText(Library(File("Diag")), id).ends_with(L": ")) << id;
}

INSTANTIATE_TEST_SUITE_P(Languages, LanguageTest, testing::ValuesIn(Listed(ZEB_LANGUAGES)),
                         [](const auto& info) { return info.param; });
} // namespace
