// What becomes of the result store's file where the system refuses one of the calls that read or replace it.
#include "CDM/src/engine/StoreFiles.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "tests/support/CaseName.h"
#include "tests/support/ImportHook.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

ZEB_HOOKED_IMPORT("kernel32", CreateFileW)
ZEB_HOOKED_IMPORT("kernel32", DeleteFileA)
ZEB_HOOKED_IMPORT("kernel32", FlushFileBuffers)
ZEB_HOOKED_IMPORT("kernel32", GetFileSizeEx)
ZEB_HOOKED_IMPORT("kernel32", MoveFileExW)
ZEB_HOOKED_IMPORT("kernel32", ReadFile)
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
BOOL WINAPI RefuseMove(LPCWSTR, LPCWSTR, DWORD)
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
    std::string Bytes() const
    {
        std::ifstream file(std::filesystem::path(m_path), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // The file stands as it was, nothing stands beside it, and nobody holds it.
    void ExpectUntouched() const
    {
        EXPECT_EQ(m_before, Bytes());
        EXPECT_FALSE(std::filesystem::exists(m_path + L".new"));
        const CFileHandle alone(CreateFileW(Path(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                            FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_TRUE(alone);
    }

    IStoreFiles& m_files = PlatformStoreFiles();
    CTempFolder m_folder;
    const std::wstring m_path = (m_folder.Path() / L"ZebDiag.bin").wstring();
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
            return m_files.Write(Path(), m_before + "more");
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
    {"Move", Operation::Write, Hooked(__imp_MoveFileExW, &RefuseMove), ERROR_SHARING_VIOLATION,
     HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION)},
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
} // namespace
