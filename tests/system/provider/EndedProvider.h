// A provider that was used by consoles and by a client of long standing, left behind results of every state
// that a run can have, and ended by itself after the last of them; then what the next provider makes of what
// it left. All cases look at this one story.
#pragma once

#include "tests/system/provider/SharedMachine.h"

// A result as it must be after the run of its test.
struct ExpectedResult
{
    const wchar_t* key;
    const wchar_t* state;
    size_t lines; // of TestResults
};

// What one provider served of the results.
struct CServedResults
{
    CResultTexts Properties;
    std::map<std::wstring, size_t> Lines; // of TestResults, by the keys of the tests
    nlohmann::json Console;               // the document of "results"
};

struct CEndedStory
{
    std::vector<std::string> Listed; // the keys of all tests
    bool WasOneProcess = false;
    bool ProviderEnded = false; // while its service may still have run
    bool AllEnded = false;
    bool Stored = false; // there is a file of results
    std::string Trace;
    CServedResults Before;
    CServedResults After;
};

class EndedProvider : public CSharedMachine
{
  public:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

  protected:
    static const std::vector<ExpectedResult>& Expected();
    static const CEndedStory& Story() { return *s_story; }

  private:
    static inline std::unique_ptr<const CEndedStory> s_story;
};
