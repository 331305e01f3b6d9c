// A repository with the system classes that tests need, and a few classes and instances to put into it.
#pragma once

#include "standin/mof/Repository.h"
#include "tests/unit/standin_object/SampleClass.h"

namespace standin
{
constexpr const wchar_t* kCimv2 = L"root\\cimv2";
constexpr const char* kSystem = R"(#pragma namespace("\\\\.\\root")
    [Abstract] class __SystemClass {};
    [Abstract] class __Provider : __SystemClass { [Key] string Name; };
    class __Win32Provider : __Provider { string CLSID; string HostingModel; };
    [Abstract] class __ProviderRegistration : __SystemClass { __Provider ref provider; };
    class __InstanceProviderRegistration : __ProviderRegistration
    { [Key] __Provider ref provider; boolean SupportsGet = FALSE; boolean SupportsPut = FALSE;
      boolean SupportsDelete = FALSE; boolean SupportsEnumeration = FALSE; };
    class __MethodProviderRegistration : __ProviderRegistration { [Key] __Provider ref provider; };)";

class Repository : public testing::Test
{
  protected:
    Repository() { m_repository.Compile(kSystem, "system"); }

    void Compile(const std::string& text) { m_repository.Compile(text, "t", kCimv2); }
    ClassDefinition Class(const wchar_t* name) { return m_repository.GetDefinition(kCimv2, name); }
    // "" for success, else what the error says behind the place.
    std::string Refusal(const std::string& text)
    {
        try
        {
            Compile(text);
            return "";
        }
        catch (const CMofError& error)
        {
            return std::string(error.what()).substr(1);
        }
    }

    CRepository m_repository{L"PC"};
};

constexpr const char* kLamps = R"(
    [Abstract, Description("d"): ToSubclass] class Device { [Key, Read: ToSubclass] string Name; string Status = "OK"; };
    class Lamp : Device { uint16 Watts = 40; uint16 Colours[] = {1, 2};
        uint32 Dim([In] uint8 Level, [In, Out, Optional] Device ref Where, [Out] string Was[]); };
    class FloorLamp : Lamp { [Override("Watts")] uint16 Watts; };
    instance of Lamp { Name = "desk"; };
    instance of FloorLamp as $F { Name = "corner"; Watts = 100; Colours = {}; };)";
} // namespace standin
