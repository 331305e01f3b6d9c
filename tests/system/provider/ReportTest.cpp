// A report on what the provider really says.
#include "Common/src/com/Text.h"
#include "tests/system/provider/SharedMachine.h"

#include <fstream>
#include <iterator>

namespace
{
std::string PageIn(const std::wstring& file)
{
    std::ifstream page(NarrowText(file), std::ios::binary);
    return {std::istreambuf_iterator<char>(page), {}};
}

TEST_F(Served, ReportHasResultsAndSettingsOfEveryAdapter)
{
    EXPECT_EQ(0u, Zebdiag(L"run --adapter ALPHA --test 1").ExitCode);
    EXPECT_EQ(1u, Zebdiag(L"run --adapter ALPHA --test 2").ExitCode);
    const std::wstring file = Machine().Folder() + L"report.html";

    const nlohmann::json report = ZebdiagJson(L"report --html \"" + file + L"\"");

    const nlohmann::json results = ZebdiagJson(L"results").at("results");
    const nlohmann::json list = ZebdiagJson(L"list").at("adapters");
    const nlohmann::json sender = ZebdiagJson(L"settings").at("settings").at(0);
    ASSERT_EQ(list.size(), report.at("adapters").size());
    std::vector<nlohmann::json> reported;
    for (size_t a = 0; a < list.size(); ++a)
        for (size_t t = 0; t < list[a].at("tests").size(); ++t)
        {
            nlohmann::json test = report.at("adapters").at(a).at("tests").at(t);
            if (const nlohmann::json result = test.at("result"); !result.is_null())
                reported.push_back(result);
            const nlohmann::json coverage =
                test.at("sendsPackets") ? sender.at("coverage") : nlohmann::json();
            EXPECT_EQ(coverage,
                      test.at("setting").is_null() ? nlohmann::json() : test["setting"].at("coverage"));
            for (const char* more : {"result", "setting", "counters"})
                test.erase(more);
            EXPECT_EQ(list[a].at("tests")[t], test);
        }
    ASSERT_EQ(2u, results.size());
    ASSERT_EQ(2u, reported.size());
    const std::string page = PageIn(file);
    EXPECT_EQ(0u, page.find("<!DOCTYPE html>")) << page;
    for (size_t i = 0; i < results.size(); ++i)
    {
        nlohmann::json result = results[i];
        result.erase("test");
        EXPECT_EQ(result, reported[i]);
        EXPECT_NE(std::string::npos,
                  page.find(results[i].at("test").at("caption").get<std::string>() + "</h3>"));
    }
    const std::string cause = results[1].at("findings").at(0);
    EXPECT_NE(std::string::npos, page.find(cause)) << cause;
    EXPECT_NE(std::string::npos, page.find("BETA</h2>"));
}
} // namespace
