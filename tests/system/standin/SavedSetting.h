// The settings of the stand-in's service, in the registry.
#pragma once

#include <vector>
#include <windows.h>

inline constexpr wchar_t kSettingsKey[] = L"SOFTWARE\\WMI stand-in";

// A setting of the service as it was when this was made.
class CSavedSetting
{
  public:
    explicit CSavedSetting(const wchar_t* name) : m_name(name)
    {
        DWORD size = 0;
        if (RegGetValueW(HKEY_LOCAL_MACHINE, kSettingsKey, m_name, RRF_RT_ANY, &m_type, nullptr, &size) !=
            ERROR_SUCCESS)
            return;
        m_data.resize(size);
        RegGetValueW(HKEY_LOCAL_MACHINE, kSettingsKey, m_name, RRF_RT_ANY, nullptr, m_data.data(), &size);
    }
    void PutBack() const
    {
        if (m_data.empty())
            RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSettingsKey, m_name);
        else
            RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSettingsKey, m_name, m_type, m_data.data(),
                            static_cast<DWORD>(m_data.size()));
    }

  private:
    const wchar_t* const m_name;
    DWORD m_type = REG_NONE;
    std::vector<BYTE> m_data;
};

// The service refuses what a strict one may refuse, until this goes.
class CStrictService
{
  public:
    CStrictService()
    {
        constexpr DWORD yes = 1;
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSettingsKey, L"Strict", REG_DWORD, &yes, sizeof yes);
    }
    ~CStrictService() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSettingsKey, L"Strict"); }
    CStrictService(const CStrictService&) = delete;
    CStrictService& operator=(const CStrictService&) = delete;
};

// How long the service holds on to what nobody uses, from now on.
inline void SetIdleTime(DWORD milliseconds)
{
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSettingsKey, L"IdleMilliseconds", REG_DWORD, &milliseconds,
                    sizeof milliseconds);
}

// Nothing that nobody uses stays during one test: for those about how processes end.
class CNoIdleTime
{
  public:
    CNoIdleTime() { SetIdleTime(0); }
    ~CNoIdleTime() { SetIdleTime(kLongIdleTime); }
    CNoIdleTime(const CNoIdleTime&) = delete;
    CNoIdleTime& operator=(const CNoIdleTime&) = delete;

    // Longer than any test between two of its steps.
    static constexpr DWORD kLongIdleTime = 600000;
};
