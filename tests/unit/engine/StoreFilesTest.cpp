// What becomes of the result store's file where the system refuses one of the calls that read or replace it.
#include "CDM/src/engine/results/store/StoreFiles.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "tests/support/CaseName.h"
#include "tests/support/ImportHook.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

ZEB_HOOKED_IMPORT("kernel32", CreateFileW)
ZEB_HOOKED_IMPORT("kernel32", DeleteFileA)
ZEB_HOOKED_IMPORT("kernel32", FlushFileBuffers)
ZEB_HOOKED_IMPORT("kernel32", GetFileSizeEx)
ZEB_HOOKED_IMPORT("kernel32", ReadFile)
ZEB_HOOKED_IMPORT("kernel32", ReplaceFileW)
ZEB_HOOKED_IMPORT("kernel32", WriteFile)

namespace
{
DWORD s_error = 0; // of the refused call

template <class Result>
Result Refuse(Result result)
{
    SetLastError(s_error);
    return result;
}

HANDLE WINAPI RefuseCreateFile(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
{
    return Refuse(INVALID_HANDLE_VALUE);
}
BOOL WINAPI RefuseDeleteFile(LPCSTR)
{
    return Refuse(FALSE);
}
BOOL WINAPI RefuseFlush(HANDLE)
{
    return Refuse(FALSE);
}
BOOL WINAPI RefuseSize(HANDLE, PLARGE_INTEGER)
{
    return Refuse(FALSE);
}
BOOL WINAPI RefuseReplace(LPCWSTR, LPCWSTR, LPCWSTR, DWORD, LPVOID, LPVOID)
{
    return Refuse(FALSE);
}
BOOL WINAPI RefuseRead(HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED)
{
    return Refuse(FALSE);
}
BOOL WINAPI RefuseWrite(HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED)
{
    return Refuse(FALSE);
}
// As on a disk that fills up: success, and less than was asked for.
BOOL WINAPI WriteLess(HANDLE, LPCVOID, DWORD size, LPDWORD written, LPOVERLAPPED)
{
    *written = size - 1;
    return TRUE;
}

class StoreFilesTest : public testing::Test
{
  protected:
    StoreFilesTest()
    {
        EXPECT_EQ(S_OK, m_files.Write(Path(), StorageBytes()));
        m_before = Bytes();
    }

    const wchar_t* Path() const { return m_path.c_str(); }
    // A sound storage without results.
    static std::string StorageBytes()
    {
        ComPtr<ILockBytes> bytes;
        ComPtr<IStorage> root;
        EXPECT_EQ(S_OK, CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Put()));
        EXPECT_EQ(S_OK, PlatformStoreFiles().Create(*bytes.Get(), root.Put()));
        EXPECT_EQ(S_OK, root->Commit(STGC_DEFAULT));
        STATSTG stat{};
        EXPECT_EQ(S_OK, bytes->Stat(&stat, STATFLAG_NONAME));
        std::string text(static_cast<size_t>(stat.cbSize.QuadPart), '\0');
        ULONG read = 0;
        EXPECT_EQ(S_OK, bytes->ReadAt({}, text.data(), static_cast<ULONG>(text.size()), &read));
        return text;
    }
    // As `StorageBytes`, and still a sound storage.
    std::string OtherBytes() const { return m_before + std::string(512, '\0'); }
    std::string Bytes() const { return BytesOf(m_path); }
    static std::string BytesOf(const std::wstring& path)
    {
        std::ifstream file(std::filesystem::path(path), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void MakeFile(const std::wstring& path, const std::string& bytes) const
    {
        std::ofstream(std::filesystem::path(path), std::ios::binary).write(bytes.data(), bytes.size());
    }
    CFileHandle Hold(DWORD share) const
    {
        return CFileHandle(
            CreateFileW(Path(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    // The file stands as it was, nothing stands beside it, and nobody holds it.
    void ExpectUntouched() const
    {
        EXPECT_EQ(m_before, Bytes());
        EXPECT_FALSE(std::filesystem::exists(m_fresh));
        const CFileHandle alone(CreateFileW(Path(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_TRUE(alone);
    }

    const std::unique_ptr<IStoreFiles> m_owned = MakePlatformStoreFiles(0);
    IStoreFiles& m_files = *m_owned;
    CTempFolder m_folder;
    const std::wstring m_path = (m_folder.Path() / L"ZebDiag.bin").wstring();
    const std::wstring m_fresh = m_path + L".new";
    std::string m_before;
};

enum class Operation
{
    Read,
    Write,
    Delete
};

struct Refusal
{
    const char* name;
    Operation operation;
    std::function<HRESULT(const std::function<HRESULT()>& operation)> underHook;
    DWORD error;
    HRESULT expected;
};

// Runs the operation while the function is replaced.
template <class Function>
auto Hooked(Function& import, Function replacement)
{
    return [&import, replacement](const std::function<HRESULT()>& operation)
    {
        const CImportHook hook(import, replacement);
        return operation();
    };
}

class RefusedFileTest : public StoreFilesTest, public testing::WithParamInterface<Refusal>
{
  protected:
    HRESULT Perform()
    {
        std::string bytes;
        switch (GetParam().operation)
        {
        case Operation::Read:
            return m_files.Read(Path(), bytes);
        case Operation::Write:
            return m_files.Write(Path(), OtherBytes());
        default:
            return m_files.Delete(Path());
        }
    }
};

TEST_P(RefusedFileTest, IsToldAndCostsNothing)
{
    s_error = GetParam().error;
    EXPECT_EQ(GetParam().expected, GetParam().underHook([&] { return Perform(); }));
    ExpectUntouched();
    EXPECT_EQ(S_OK, Perform()) << "the next time";
}

const Refusal kRefusals[] = {
    {"OpenToRead", Operation::Read, Hooked(__imp_CreateFileW, &RefuseCreateFile), ERROR_SHARING_VIOLATION,
     HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION)},
    {"OpenWhatIsMissing", Operation::Read, Hooked(__imp_CreateFileW, &RefuseCreateFile), ERROR_FILE_NOT_FOUND,
     STG_E_FILENOTFOUND},
    {"Size", Operation::Read, Hooked(__imp_GetFileSizeEx, &RefuseSize), ERROR_GEN_FAILURE,
     HRESULT_FROM_WIN32(ERROR_GEN_FAILURE)},
    {"Read", Operation::Read, Hooked(__imp_ReadFile, &RefuseRead), ERROR_CRC, HRESULT_FROM_WIN32(ERROR_CRC)},
    {"CreateBeside", Operation::Write, Hooked(__imp_CreateFileW, &RefuseCreateFile), ERROR_ACCESS_DENIED,
     E_ACCESSDENIED},
    {"Write", Operation::Write, Hooked(__imp_WriteFile, &RefuseWrite), ERROR_DISK_FULL,
     HRESULT_FROM_WIN32(ERROR_DISK_FULL)},
    {"WriteLess", Operation::Write, Hooked(__imp_WriteFile, &WriteLess), ERROR_SUCCESS, STG_E_MEDIUMFULL},
    {"Flush", Operation::Write, Hooked(__imp_FlushFileBuffers, &RefuseFlush), ERROR_GEN_FAILURE,
     HRESULT_FROM_WIN32(ERROR_GEN_FAILURE)},
    {"Delete", Operation::Delete, Hooked(__imp_DeleteFileA, &RefuseDeleteFile), ERROR_ACCESS_DENIED,
     E_ACCESSDENIED},
    {"RefusalWithoutAReason", Operation::Write, Hooked(__imp_WriteFile, &RefuseWrite), ERROR_SUCCESS, E_FAIL},
};
INSTANTIATE_TEST_SUITE_P(Calls, RefusedFileTest, testing::ValuesIn(kRefusals), NameOf<Refusal>);

TEST_F(StoreFilesTest, WrittenBytesAreReadBack)
{
    const std::string bytes = StorageBytes();
    EXPECT_EQ(S_OK, m_files.Write(Path(), bytes));
    std::string read;
    EXPECT_EQ(S_OK, m_files.Read(Path(), read));
    EXPECT_EQ(bytes, read);
    EXPECT_EQ(S_OK, m_files.IsStorageFile(Path()));
}

TEST_F(StoreFilesTest, AMissingFolderIsAMissingFileToWhoReads)
{
    const std::wstring path = (m_folder.Path() / L"missing" / L"ZebDiag.bin").wstring();
    std::string bytes;
    EXPECT_EQ(STG_E_FILENOTFOUND, m_files.Read(path.c_str(), bytes));
    EXPECT_EQ(STG_E_FILENOTFOUND, m_files.IsStorageFile(path.c_str()));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), m_files.Write(path.c_str(), m_before));
}

struct ReplaceRefusal
{
    const char* name;
    DWORD error;
};

class RefusedReplaceTest : public StoreFilesTest, public testing::WithParamInterface<ReplaceRefusal>
{
};

TEST_P(RefusedReplaceTest, LeavesTheNewFileForWhoComesNext)
{
    const std::string other = OtherBytes();
    std::string read;
    {
        s_error = GetParam().error;
        const CImportHook hook(__imp_ReplaceFileW, &RefuseReplace);
        EXPECT_EQ(HRESULT_FROM_WIN32(s_error), m_files.Write(Path(), other));
        EXPECT_EQ(m_before, Bytes());
        EXPECT_EQ(other, BytesOf(m_fresh));
        // It counts at once, wherever it is.
        EXPECT_EQ(S_OK, m_files.Read(Path(), read));
        EXPECT_EQ(other, read);
        EXPECT_EQ(S_OK, m_files.IsStorageFile(Path()));
    }
    EXPECT_EQ(S_OK, m_files.Read(Path(), read));
    EXPECT_EQ(other, read);
    EXPECT_EQ(other, Bytes());
    EXPECT_FALSE(std::filesystem::exists(m_fresh));
}

const ReplaceRefusal kReplaceRefusals[] = {
    {"SharingViolation", ERROR_SHARING_VIOLATION},
    {"AccessDenied", ERROR_ACCESS_DENIED},
    {"NotRemoved", ERROR_UNABLE_TO_REMOVE_REPLACED},
    {"NotMoved", ERROR_UNABLE_TO_MOVE_REPLACEMENT},
    {"AnyOther", ERROR_GEN_FAILURE},
};
INSTANTIATE_TEST_SUITE_P(Errors, RefusedReplaceTest, testing::ValuesIn(kReplaceRefusals),
                         NameOf<ReplaceRefusal>);

TEST_F(StoreFilesTest, AFileThatIsHeldIsNotReplaced)
{
    const CFileHandle held = Hold(FILE_SHARE_READ);
    EXPECT_TRUE(FAILED(m_files.Write(Path(), OtherBytes())));
    EXPECT_EQ(m_before, Bytes());
    EXPECT_EQ(OtherBytes(), BytesOf(m_fresh));
}

// It may be the newest whole one.
TEST_F(StoreFilesTest, ANewFileThatIsHeldIsNotRemoved)
{
    MakeFile(m_fresh, m_before);
    {
        const CFileHandle held(CreateFileW(m_fresh.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(held);
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), m_files.Write(Path(), OtherBytes()));
    }
    EXPECT_EQ(m_before, BytesOf(m_fresh));
    EXPECT_EQ(m_before, Bytes());
}

TEST_F(StoreFilesTest, ANewFileWithoutAnOldOneIsTaken)
{
    std::filesystem::rename(m_path, m_fresh);
    EXPECT_EQ(S_OK, m_files.IsStorageFile(Path()));
    EXPECT_EQ(m_before, Bytes());
    EXPECT_FALSE(std::filesystem::exists(m_fresh));
}

TEST_F(StoreFilesTest, HalfANewFileIsNotTaken)
{
    MakeFile(m_fresh, m_before.substr(0, m_before.size() / 2));
    std::string read;
    EXPECT_EQ(S_OK, m_files.Read(Path(), read));
    EXPECT_EQ(m_before, read);
    EXPECT_EQ(m_before, Bytes());
    EXPECT_EQ(S_OK, m_files.Write(Path(), OtherBytes()));
    EXPECT_EQ(OtherBytes(), Bytes());
    EXPECT_FALSE(std::filesystem::exists(m_fresh));
}

TEST_F(StoreFilesTest, ADeletedFileDoesNotComeBack)
{
    MakeFile(m_fresh, m_before);
    EXPECT_EQ(S_OK, m_files.Delete(Path()));
    std::string read;
    EXPECT_EQ(STG_E_FILENOTFOUND, m_files.Read(Path(), read));
}

// Another process holds the file for a moment, as a virus scanner does.
constexpr wchar_t kHeldFile[] = L"ZEB_TEST_HELD_FILE";
constexpr wchar_t kIsHeld[] = L"ZebTestFileIsHeld";
constexpr wchar_t kLetGo[] = L"ZebTestLetFileGo";

// Not a test: what the other process does.
TEST(FileHolder, DISABLED_HoldsAFileUntilItIsToldToLetGo)
{
    wchar_t path[MAX_PATH];
    ASSERT_NE(0u, GetEnvironmentVariableW(kHeldFile, path, MAX_PATH));
    const CHandle letGo(OpenEventW(SYNCHRONIZE, FALSE, kLetGo));
    const CHandle isHeld(OpenEventW(EVENT_MODIFY_STATE, FALSE, kIsHeld));
    const CFileHandle file(
        CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(file && letGo && isHeld);
    SetEvent(isHeld.Get());
    WaitForSingleObject(letGo.Get(), INFINITE);
}

HANDLE s_refused = nullptr; // is set when the system refuses to replace a file
decltype(&ReplaceFileW) s_realReplace = nullptr;

BOOL WINAPI WatchReplace(LPCWSTR old, LPCWSTR fresh, LPCWSTR backup, DWORD flags, LPVOID r1, LPVOID r2)
{
    const BOOL done = s_realReplace(old, fresh, backup, flags, r1, r2);
    const DWORD error = GetLastError();
    if (!done)
        SetEvent(s_refused);
    SetLastError(error);
    return done;
}

TEST_F(StoreFilesTest, AFileThatAnotherProcessHoldsForAMomentIsReplaced)
{
    const CHandle isHeld(CreateEventW(nullptr, TRUE, FALSE, kIsHeld));
    const CHandle letGo(CreateEventW(nullptr, TRUE, FALSE, kLetGo));
    const CHandle refused(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    s_refused = refused.Get();
    wchar_t program[MAX_PATH];
    ASSERT_NE(0u, GetModuleFileNameW(nullptr, program, MAX_PATH));
    std::wstring command =
        L"\"" + std::wstring(program) + L"\" --gtest_also_run_disabled_tests --gtest_filter=FileHolder.*";
    SetEnvironmentVariableW(kHeldFile, Path());
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    ASSERT_TRUE(CreateProcessW(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &started));
    const CHandle thread(started.hThread);
    const CHandle process(started.hProcess);
    const HANDLE either[] = {isHeld.Get(), process.Get()};
    ASSERT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(2, either, FALSE, INFINITE));

    const std::string other = OtherBytes();
    s_realReplace = __imp_ReplaceFileW;
    const CImportHook hook(__imp_ReplaceFileW, &WatchReplace);
    HRESULT written = E_PENDING;
    std::thread writer([&] { written = MakePlatformStoreFiles(600'000)->Write(Path(), other); });
    const HANDLE first[] = {refused.Get(), process.Get()};
    EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(2, first, FALSE, INFINITE));
    SetEvent(letGo.Get());
    writer.join();
    WaitForSingleObject(process.Get(), INFINITE);
    EXPECT_EQ(S_OK, written);
    EXPECT_EQ(other, Bytes());
    EXPECT_FALSE(std::filesystem::exists(m_fresh));
}
} // namespace
