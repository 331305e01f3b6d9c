// The program's own texts in the language of its user. They stand in English where they are used, and by the
// English text the translation is found. Each language is a file of this folder, named like the language.
#pragma once

#include <initializer_list>
#include <span>
#include <string>

namespace zebdiag
{
// Chooses the language of all texts from then on, for the whole process; English for one that has no file.
// Called while no other thread has anything to say.
void SpeakLanguageOf(unsigned long locale);
bool SaidInEnglish() noexcept;

// The text in the language that is spoken; English if it has none.
std::wstring Said(const wchar_t* english);
// With values in the places "{1}", "{2}" and so on, which each language orders as it likes.
std::wstring Said(const wchar_t* english, std::initializer_list<std::wstring> values);

// A text that is said later, such as one in a table.
constexpr const wchar_t* Marked(const wchar_t* english) noexcept
{
    return english;
}

struct CTranslation
{
    const wchar_t* English;
    const wchar_t* Text;
};

struct CLanguage
{
    const wchar_t* Name; // "de"
    std::span<const CTranslation> Texts;
};

std::span<const CLanguage> Languages() noexcept;
} // namespace zebdiag
