// A MOF text as a row of tokens, read from the front: words, texts, whole decimal numbers and marks. What is
// not as expected throws CMofProblem. Hexadecimal, real and character literals are not among the tokens: no
// schema here has them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace standin
{
struct CMofPlace
{
    size_t Line = 1; // both count from 1
    size_t Column = 1;
};

// What is wrong with a text, and where.
struct CMofProblem
{
    CMofPlace Place;
    std::string Reason; // begins small, has no full stop
};

struct CMofName
{
    std::wstring Text;
    CMofPlace Place;
};

struct CMofNumber
{
    bool Negative = false;
    uint64_t Magnitude = 0;
};

// A name as problems quote it.
std::string Quoted(std::wstring_view name);

class CMofReader
{
  public:
    enum EKind
    {
        Word,
        Text,
        Number,
        Mark,
        End
    };

    // The text is UTF-8 and stays the caller's.
    explicit CMofReader(std::string_view text);

    // The next token.
    EKind Kind() const noexcept { return m_kind; }
    CMofPlace Place() const noexcept { return m_place; }
    [[noreturn]] void Fail(const std::string& reason) const { throw CMofProblem{m_place, reason}; }

    bool Is(char mark) const noexcept { return m_kind == Mark && m_token.front() == mark; }
    bool IsWord(std::string_view word) const noexcept;
    // Takes the token if it is this one.
    bool Take(char mark);
    bool TakeWord(std::string_view word);
    // Fails if it is not.
    void Expect(char mark);
    void ExpectWord(std::string_view word);
    CMofName TakeName(const char* what = "a name");
    // Of texts that follow each other.
    std::wstring TakeTexts();
    CMofNumber TakeNumber();

  private:
    char Peek(size_t ahead = 0) const noexcept { return ahead < m_left.size() ? m_left[ahead] : '\0'; }
    void Skip(size_t count);
    void SkipBlanks();
    void Advance();
    void LexText();

    std::string_view m_left; // behind the token
    CMofPlace m_at;          // where that begins
    EKind m_kind = End;
    CMofPlace m_place;
    std::string_view m_token;
    std::string m_text; // of a text, without quotes and escapes
};
} // namespace standin
