// A result store in a folder of the test's own, and means to look into its file.
#pragma once

#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/results/store/ResultsStore.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TraceCapture.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>

class CStoreTest : public testing::Test
{
  protected:
    static constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

    // A result with every value different from its default.
    static std::unique_ptr<CDiagResult> SomeResult(const wchar_t* key = L"A@K1",
                                                   TestState state = TestStatePassed)
    {
        auto result = EmptyResult(key);
        CSettingData setting;
        setting.TestWarningLevel = 65535;
        setting.ReportSoftErrors = 1;
        setting.ReportStatusMessages = 0;
        setting.PercentOfTestCoverage = 255;
        setting.QuickMode = 1;
        setting.HaltOnError = 1;
        result->SetSettingValues(setting);
        CResultData data = result->Data();
        data.IsPackage = 1;
        data.OtherStateDescriptionResourceId = 0xFFFFFFFF;
        data.EstimatedTimeOfPerforming = 12;
        result->SetData(data);
        result->SetTestState(state);
        result->SetPercentComplete(120);
        result->SetStartTime({2024, 3, 0, 5, 6, 7, 8, 0});
        result->SetCompletionTime({2024, 3, 0, 5, 6, 8, 9, 0});
        result->SetTimeStamp({2024, 12, 0, 31, 23, 59, 59, 0});
        CResultMessages messages;
        messages.Add(0, 0x80040123);
        messages.Add(3810, 0);
        messages.Add(13, 4294967295u);
        result->SetMessages(messages);
        return result;
    }
    static std::unique_ptr<CDiagResult> EmptyResult(const wchar_t* key = L"A@K1")
    {
        return std::make_unique<CDiagResult>(CBstr(key).Get(), 5010, true);
    }

    HRESULT Store(const CDiagResult& result, const wchar_t* id = L"A@0", const wchar_t* adapter = L"K1")
    {
        CStoreSession session(Files(), path, CStoreSession::Purpose::Change);
        const HRESULT hr = CResultsStore(session).StoreResult(CBstr(id), CBstr(adapter), result);
        const HRESULT published = session.Publish();
        return FAILED(hr) ? hr : published;
    }
    HRESULT Load(CDiagResult& result, const wchar_t* id = L"A@0", const wchar_t* adapter = L"K1")
    {
        CStoreSession session(Files(), path, CStoreSession::Purpose::Read);
        return CResultsStore(session).LoadResult(CBstr(id), CBstr(adapter), result);
    }

    ComPtr<IStorage> OpenRoot()
    {
        ComPtr<IStorage> root;
        EXPECT_EQ(S_OK, StgOpenStorage(path.c_str(), nullptr, kReadWrite, nullptr, 0, root.Put()));
        return root;
    }
    // The bytes of a stream, or "missing".
    std::string Bytes(const wchar_t* id, const wchar_t* stream)
    {
        const ComPtr<IStorage> root = OpenRoot();
        ComPtr<IStorage> sub;
        ComPtr<IStream> found;
        if (FAILED(root->OpenStorage(id, nullptr, kReadWrite, nullptr, 0, sub.Put())) ||
            FAILED(sub->OpenStream(stream, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, found.Put())))
            return "missing";
        std::string bytes(65536, '\0');
        ULONG read = 0;
        EXPECT_TRUE(SUCCEEDED(found->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read)));
        bytes.resize(read);
        return bytes;
    }
    // Replaces a stream's bytes.
    void Spoil(const wchar_t* stream, std::string_view bytes, const wchar_t* id = L"A@0")
    {
        const ComPtr<IStorage> root = OpenRoot();
        ComPtr<IStorage> sub;
        ComPtr<IStream> created;
        ASSERT_EQ(S_OK, root->OpenStorage(id, nullptr, kReadWrite, nullptr, 0, sub.Put()));
        ASSERT_EQ(S_OK, sub->CreateStream(stream, STGM_CREATE | kReadWrite, 0, 0, created.Put()));
        ASSERT_EQ(S_OK, created->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
    }
    void Remove(const wchar_t* stream)
    {
        const ComPtr<IStorage> root = OpenRoot();
        ComPtr<IStorage> sub;
        ASSERT_EQ(S_OK, root->OpenStorage(L"A@0", nullptr, kReadWrite, nullptr, 0, sub.Put()));
        ASSERT_EQ(S_OK, sub->DestroyElement(stream));
    }
    std::string FileBytes() { return BytesOf(path); }
    static std::string BytesOf(const std::wstring& of)
    {
        std::ifstream file(std::filesystem::path(of), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Rewrite(const std::string& bytes)
    {
        std::ofstream file(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
        file.write(bytes.data(), bytes.size());
    }
    // The bytes that stand for a text.
    static std::string TextBytes(std::wstring_view text)
    {
        const ULONG count = static_cast<ULONG>((text.size() + 1) * sizeof(wchar_t));
        std::string bytes(reinterpret_cast<const char*>(&count), sizeof(count));
        bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
        return bytes.append(sizeof(wchar_t), '\0');
    }

    virtual IStoreFiles& Files() { return PlatformStoreFiles(); }

    CTempFolder folder;
    CTraceCapture trace;
    const std::wstring path = (folder.Path() / L"ZebDiag.bin").wstring();
};

// Every field that a client can see.
inline void ExpectSame(const CResultData& expected, const CResultData& actual)
{
    const auto time = [](const std::optional<SYSTEMTIME>& t)
    {
        return t ? std::to_string(t->wYear) + "-" + std::to_string(t->wMonth) + "-" +
                       std::to_string(t->wDay) + " " + std::to_string(t->wHour) + ":" +
                       std::to_string(t->wMinute) + ":" + std::to_string(t->wSecond)
                 : std::string("absent");
    };
    EXPECT_EQ(expected.TestWarningLevel, actual.TestWarningLevel);
    EXPECT_EQ(expected.ReportSoftErrors, actual.ReportSoftErrors);
    EXPECT_EQ(expected.ReportStatusMessages, actual.ReportStatusMessages);
    EXPECT_EQ(expected.PercentOfTestCoverage, actual.PercentOfTestCoverage);
    EXPECT_EQ(expected.QuickMode, actual.QuickMode);
    EXPECT_EQ(expected.HaltOnError, actual.HaltOnError);
    EXPECT_STREQ(expected.ResultID.Text(), actual.ResultID.Text());
    EXPECT_STREQ(expected.DiagnosticCreationClassName.Text(), actual.DiagnosticCreationClassName.Text());
    EXPECT_STREQ(expected.ExecutionID.Text(), actual.ExecutionID.Text());
    EXPECT_EQ(expected.IsPackage, actual.IsPackage);
    EXPECT_EQ(time(expected.TimeStamp), time(actual.TimeStamp));
    EXPECT_EQ(time(expected.TestStartTime), time(actual.TestStartTime));
    EXPECT_EQ(time(expected.TestCompletionTime), time(actual.TestCompletionTime));
    EXPECT_EQ(expected.TestState, actual.TestState);
    EXPECT_EQ(expected.OtherStateDescriptionResourceId, actual.OtherStateDescriptionResourceId);
    EXPECT_EQ(expected.MessageCount, actual.MessageCount);
    EXPECT_EQ(expected.StringIDs, actual.StringIDs);
    EXPECT_EQ(expected.TestMessages, actual.TestMessages);
    EXPECT_EQ(expected.EstimatedTimeOfPerforming, actual.EstimatedTimeOfPerforming);
    EXPECT_EQ(expected.PercentComplete, actual.PercentComplete);
    EXPECT_EQ(expected.DiagnosticNameStringID, actual.DiagnosticNameStringID);
    EXPECT_EQ(expected.SenderResponder, actual.SenderResponder);
}
