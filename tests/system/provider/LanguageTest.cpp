// Each client gets texts in the language that it asks for, from one provider.
#include "tests/system/provider/SharedMachine.h"

namespace
{
std::string TextOf(const nlohmann::json& list, const std::string& key, const char* field)
{
    for (const auto& adapter : list.at("adapters"))
        for (const auto& test : adapter.at("tests"))
            if (test.at("key") == key)
                return test.at(field);
    return "no such test";
}

// What a client of this language reads of the failed test.
nlohmann::json FindingsIn(const std::wstring& locale)
{
    const nlohmann::json results = ZebdiagJson(L"results --locale " + locale);
    for (const auto& result : results.at("results"))
        if (result.at("test").at("key") == "2@ALPHA")
            return result.at("findings");
    return {};
}

TEST_F(Served, TextsAreInTheLanguageOfTheClient)
{
    const nlohmann::json german = ZebdiagJson(L"list --locale de-DE");
    EXPECT_EQ("Verbindung", TextOf(german, "1@ALPHA", "caption"));
    EXPECT_EQ(
        "Prüft, ob der Adapter aktiviert ist und eine Verbindung zu einem Switch oder einem anderen Gerät hat. "
        "Der Datenverkehr des Adapters wird nicht gestört.",
        TextOf(german, "1@ALPHA", "description"));
    const nlohmann::json english = ZebdiagJson(L"list --locale en-US");
    EXPECT_EQ("Link", TextOf(english, "1@ALPHA", "caption"));
}

TEST_F(Served, FindingsAreInTheLanguageOfWhoReadsThem)
{
    const CRunResult run = Zebdiag(L"run --adapter ALPHA --test 2 --locale en-US");
    EXPECT_EQ(1u, run.ExitCode) << run.Output;
    const nlohmann::json german = {
        "Es wurde keine Geschwindigkeit ausgehandelt, weil der Adapter nicht verbunden ist. Führen Sie zuerst den "
        "Verbindungstest aus, und beheben Sie das Verbindungsproblem.",
        "Der Test von Geschwindigkeit und Duplexmodus ist fehlgeschlagen. Prüfen Sie die Kategorie des Kabels und ob "
        "beide Enden auf automatische Aushandlung eingestellt sind, und führen Sie den Test erneut aus."};
    EXPECT_EQ(german, FindingsIn(L"de-DE"));
    EXPECT_NE(german, FindingsIn(L"en-US"));
}

TEST_F(Served, TextsAreTheComputersForALanguageWithoutLibraries)
{
    const bool isGerman = PRIMARYLANGID(GetSystemDefaultLangID()) == LANG_GERMAN;
    EXPECT_EQ(isGerman ? "Verbindung" : "Link",
              TextOf(ZebdiagJson(L"list --locale fr-FR"), "1@ALPHA", "caption"));
    EXPECT_EQ(1u, Zebdiag(L"run --adapter ALPHA --test 2").ExitCode);
    const nlohmann::json findings = FindingsIn(L"fr-FR");
    ASSERT_EQ(2u, findings.size()) << findings.dump();
    EXPECT_EQ(FindingsIn(isGerman ? L"de-DE" : L"en-US"), findings);
}
} // namespace
