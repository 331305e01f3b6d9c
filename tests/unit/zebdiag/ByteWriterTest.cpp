// Bytes to files and pipes, and which losses count.
#include "tools/zebdiag/ByteWriter.h"

#include "Common/src/com/Owned.h"
#include "tests/support/TempFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace zebdiag
{
namespace
{
class ByteWriterTest : public testing::Test
{
  protected:
    CFileHandle Open(DWORD access, DWORD disposition) const
    {
        return CFileHandle(CreateFileW(File().c_str(), access, 0, nullptr, disposition, 0, nullptr));
    }
    std::wstring File() const { return (m_folder.Path() / "out").wstring(); }

    CTempFolder m_folder;
};

TEST_F(ByteWriterTest, WritesAll)
{
    const std::string many(300000, 'x');
    {
        const CFileHandle file = Open(GENERIC_WRITE, CREATE_NEW);
        ASSERT_TRUE(file);
        CByteWriter writer(file.Get());
        writer.Write("begin ");
        writer.Write(many);
        EXPECT_EQ(writer.Error(), 0u);
    }
    std::ifstream opened(std::filesystem::path(File()), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(opened), {}), "begin " + many);
}

TEST_F(ByteWriterTest, RemembersALoss)
{
    ASSERT_TRUE(Open(GENERIC_WRITE, CREATE_NEW));
    const CFileHandle file = Open(GENERIC_READ, OPEN_EXISTING);
    ASSERT_TRUE(file);
    CByteWriter writer(file.Get());
    EXPECT_EQ(writer.Error(), 0u) << "nothing is written yet";
    writer.Write("");
    EXPECT_EQ(writer.Error(), 0u) << "nothing is lost";
    writer.Write("x");
    EXPECT_EQ(writer.Error(), DWORD{ERROR_ACCESS_DENIED});
    writer.Write("");
    EXPECT_EQ(writer.Error(), DWORD{ERROR_ACCESS_DENIED});
}

// Such as one that shows the first lines only.
TEST_F(ByteWriterTest, ReaderThatHasEnoughIsNoLoss)
{
    CHandle read;
    CHandle write;
    ASSERT_TRUE(CreatePipe(read.Put(), write.Put(), nullptr, 4096));
    CByteWriter writer(write.Get());
    writer.Write("first");
    read.Reset();
    DWORD written = 0;
    ASSERT_FALSE(WriteFile(write.Get(), "x", 1, &written, nullptr)) << "the reader has gone";
    writer.Write("second");
    EXPECT_EQ(writer.Error(), 0u);
}

TEST_F(ByteWriterTest, NoOutputAtAllIsNoLoss)
{
    for (const HANDLE none : {HANDLE{nullptr}, INVALID_HANDLE_VALUE})
    {
        CByteWriter writer(none);
        writer.Write("x");
        EXPECT_EQ(writer.Error(), 0u);
    }
}
} // namespace
} // namespace zebdiag
