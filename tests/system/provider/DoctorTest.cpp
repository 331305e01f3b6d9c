// "zebdiag doctor" before the real processes: nothing is wrong with a good installation, and what was broken
// is named.
#include "tests/system/provider/SharedMachine.h"

#include <set>

namespace
{
using Names = std::set<std::string>;

Names PointsThatAre(const nlohmann::json& document, const char* state)
{
    Names names;
    for (const auto& point : document.at("points"))
        if (point.at("state") == state)
            names.insert(point.at("point"));
    return names;
}

std::string FindingOf(const nlohmann::json& document, const std::string& name)
{
    for (const auto& point : document.at("points"))
        if (point.at("point") == name)
            return point.at("finding");
    return {};
}

bool Has(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

// A text value of the registry, put back at the end.
class CChangedValue
{
  public:
    CChangedValue(const wchar_t* key, const wchar_t* name, const std::wstring& text)
        : m_key(key), m_name(name)
    {
        DWORD size = sizeof m_before;
        if (RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, m_before, &size) !=
            ERROR_SUCCESS)
            throw std::runtime_error("a value that a test changes is not there");
        Set(text.c_str());
    }
    ~CChangedValue() { Set(m_before); }
    CChangedValue(const CChangedValue&) = delete;
    CChangedValue& operator=(const CChangedValue&) = delete;

  private:
    void Set(const wchar_t* text) const
    {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, m_key, m_name, REG_SZ, text,
                        static_cast<DWORD>((wcslen(text) + 1) * sizeof(wchar_t)));
    }

    const wchar_t* const m_key;
    const wchar_t* const m_name;
    wchar_t m_before[1024] = {};
};

// The test agent without its registration.
class CUnregisteredTestAgent
{
  public:
    CUnregisteredTestAgent() { Call(L"/u "); }
    ~CUnregisteredTestAgent() { Call(L""); }
    CUnregisteredTestAgent(const CUnregisteredTestAgent&) = delete;
    CUnregisteredTestAgent& operator=(const CUnregisteredTestAgent&) = delete;

  private:
    static void Call(const wchar_t* option)
    {
        const CRunResult result =
            RunProgram(std::wstring(L"regsvr32.exe /s ") + option + L"\"" + BinFolder() + L"VorlTest.dll\"");
        EXPECT_EQ(0u, result.ExitCode) << result.Output;
    }
};

TEST_F(Served, DoctorFindsNoFaultInAGoodInstallation)
{
    // A test of the installation that was ended before its time may have left one.
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE,
                       L"SOFTWARE\\Classes\\AppID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}", L"RunAs");
    const nlohmann::json document = ZebdiagJson(L"doctor");
    EXPECT_EQ(Names{}, PointsThatAre(document, "wrong")) << document.dump(1);
    // A development machine has no account for the provider.
    EXPECT_EQ(Names{"identity"}, PointsThatAre(document, "unknown")) << document.dump(1);
    EXPECT_EQ(13u, PointsThatAre(document, "good").size());
    EXPECT_TRUE(Has(FindingOf(document, "answer"), "It named 5 tests within "))
        << FindingOf(document, "answer");
    EXPECT_TRUE(Has(FindingOf(document, "adapters"), "With tests: ALPHA, BETA."));
}

TEST_F(Served, DoctorNamesAMissingDataFolder)
{
    const CChangedValue changed(L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag", L"InstalledDir",
                                Machine().Folder() + L"gone\\");
    const nlohmann::json document = ZebdiagJson(L"doctor", 1);
    EXPECT_EQ(Names{"data_folder"}, PointsThatAre(document, "wrong")) << document.dump(1);
    EXPECT_TRUE(Has(FindingOf(document, "data_folder"), "gone\\ is not there"));
    EXPECT_FALSE(Machine().HasFile(L"gone")) << "the doctor changes nothing";
}

TEST_F(Served, DoctorNamesClassesThatTheNamespaceLacks)
{
    const nlohmann::json document = ZebdiagJson(L"doctor --namespace root", 6);
    EXPECT_EQ(Names{"base_classes"}, PointsThatAre(document, "wrong")) << document.dump(1);
    EXPECT_TRUE(
        Has(FindingOf(document, "base_classes"), "root lacks CIM_NetworkAdapter, CIM_DiagnosticTest"));
    EXPECT_TRUE(PointsThatAre(document, "unknown").contains("answer"));
}

TEST_F(Served, DoctorNamesANamespaceThatIsNotThere)
{
    const nlohmann::json document = ZebdiagJson(L"doctor --namespace root\\nope", 6);
    EXPECT_EQ(Names{"namespace"}, PointsThatAre(document, "wrong")) << document.dump(1);
    EXPECT_TRUE(PointsThatAre(document, "good").contains("service"));
}

TEST(Doctor, NamesAnAgentThatIsNotRegistered)
{
    const CProviderMachine machine;
    const CUnregisteredTestAgent unregistered;
    const nlohmann::json document = ZebdiagJson(L"doctor", 6);
    EXPECT_EQ(Names{"agent"}, PointsThatAre(document, "wrong")) << document.dump(1);
    EXPECT_TRUE(PointsThatAre(document, "unknown").contains("answer"));
}

TEST(Doctor, NamesAProviderWhoseFileIsGone)
{
    const CProviderMachine machine;
    const CChangedValue changed(
        L"SOFTWARE\\Classes\\CLSID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}\\LocalServer32", nullptr,
        L"C:\\no such folder\\Drevok.EXE");
    const nlohmann::json document = ZebdiagJson(L"doctor", 6);
    EXPECT_EQ(Names{"registration"}, PointsThatAre(document, "wrong")) << document.dump(1);
    EXPECT_TRUE(
        Has(FindingOf(document, "registration"), "C:\\no such folder\\Drevok.EXE, which is not there"));
    EXPECT_TRUE(PointsThatAre(document, "unknown").contains("answer"));
}
} // namespace
