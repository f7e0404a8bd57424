#include "platform/CFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr unsigned kRewrite = CFile::modeCreate | CFile::modeWrite;

class CFileTest : public testing::Test {
protected:
    CFileTest()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "qv-file-XXXXXX").string();
        EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
        directory = pattern;
        path = directory / "file";
    }
    ~CFileTest() override { std::filesystem::remove_all(directory); }

    void WriteContent(const std::string& content) const { std::ofstream(path) << content; }

    [[nodiscard]] std::string Content() const
    {
        std::ifstream in(path);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    [[nodiscard]] int CauseOfOpening(const std::filesystem::path& file, unsigned flags) const
    {
        CFile opened;
        CFileException error;
        EXPECT_FALSE(opened.Open(file.c_str(), flags, &error));
        EXPECT_NE(error.m_lOsError, 0);
        EXPECT_EQ(error.m_strFileName, file.c_str());
        EXPECT_FALSE(opened.Open(file.c_str(), flags));
        return error.m_cause;
    }

    std::filesystem::path directory;
    std::filesystem::path path;
};

/// Lowers a limit of the process for one scope.
class LimitScope {
    using Resource = decltype(RLIMIT_FSIZE);

public:
    LimitScope(Resource resource, rlim_t value) : m_resource(resource)
    {
        EXPECT_EQ(getrlimit(m_resource, &m_before), 0);
        const rlimit lowered{value, m_before.rlim_max};
        EXPECT_EQ(setrlimit(m_resource, &lowered), 0);
    }
    LimitScope(const LimitScope&) = delete;
    LimitScope& operator=(const LimitScope&) = delete;
    ~LimitScope() { setrlimit(m_resource, &m_before); }

private:
    Resource m_resource;
    rlimit m_before{};
};

template <class Action>
std::optional<int> ThrownCause(Action action)
{
    try {
        action();
    } catch (CFileException* error) {
        const int cause = error->m_cause;
        error->Delete();
        return cause;
    }
    return std::nullopt;
}

TEST_F(CFileTest, writesAndReads)
{
    CFile file;
    ASSERT_TRUE(file.Open(path.c_str(), kRewrite));
    file.Write("hello ", 6);
    file.Write("world", 5);
    file.Write(nullptr, 0);
    EXPECT_EQ(file.SeekToEnd(), 11u);
    file.Close();
    EXPECT_EQ(Content(), "hello world");

    ASSERT_TRUE(file.Open(path.c_str(), CFile::modeRead | CFile::shareDenyNone));
    char buffer[8];
    EXPECT_EQ(file.Read(buffer, sizeof(buffer)), 8u);
    EXPECT_EQ(file.Read(buffer, sizeof(buffer)), 3u);
    EXPECT_EQ(file.Read(buffer, sizeof(buffer)), 0u);
}

TEST_F(CFileTest, creatingEmptiesTheFileUnlessToldNotTo)
{
    WriteContent("old");
    {
        CFile file;
        ASSERT_TRUE(file.Open(path.c_str(), kRewrite | CFile::modeNoTruncate));
        EXPECT_EQ(file.SeekToEnd(), 3u);
        file.Write("+new", 4);
    }
    EXPECT_EQ(Content(), "old+new");
    CFile file;
    ASSERT_TRUE(file.Open(path.c_str(), CFile::modeCreate | CFile::modeReadWrite));
    EXPECT_EQ(Content(), "");
}

TEST_F(CFileTest, missingFilesAreNotMadeUnlessAsked)
{
    for (const unsigned mode : {CFile::modeRead, CFile::modeWrite, CFile::modeReadWrite}) {
        EXPECT_EQ(CauseOfOpening(path, mode), CFileException::fileNotFound);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(CFileTest, tellsWhyAFileCannotBeOpened)
{
    WriteContent("x");
    EXPECT_EQ(CauseOfOpening(path / "below", kRewrite), CFileException::badPath);
    EXPECT_EQ(CauseOfOpening(directory, CFile::modeWrite), CFileException::accessDenied);
    EXPECT_EQ(CauseOfOpening("", CFile::modeRead), CFileException::fileNotFound);
    EXPECT_EQ(CauseOfOpening(std::string(5000, 'x'), CFile::modeRead), CFileException::badPath);
}

TEST_F(CFileTest, refusesASecondFileWhileOneIsOpen)
{
    CFile file;
    CFileException error;
    ASSERT_TRUE(file.Open(path.c_str(), kRewrite));
    EXPECT_FALSE(file.Open((directory / "other").c_str(), kRewrite, &error));
    EXPECT_EQ(error.m_lOsError, EBUSY);
    EXPECT_FALSE(std::filesystem::exists(directory / "other"));
    file.Write("x", 1);
}

TEST_F(CFileTest, theErrorNamesFileAndReason)
{
    CFile file;
    CFileException error;
    ASSERT_FALSE(file.Open(path.c_str(), CFile::modeRead, &error));
    EXPECT_THAT(error.GetErrorMessage().GetString(), StartsWith(path.string() + ": "));
    EXPECT_THAT(error.GetErrorMessage().GetString(), HasSubstr("No such file"));
}

TEST_F(CFileTest, aFullDiskIsToldAsSuch)
{
    CFile file;
    ASSERT_TRUE(file.Open("/dev/full", kRewrite));
    EXPECT_EQ(ThrownCause([&] { file.Write("x", 1); }), CFileException::diskFull);
}

TEST_F(CFileTest, aWriteThatStopsHalfwayGoesOn)
{
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    std::optional<int> cause;
    {
        const LimitScope limit(RLIMIT_FSIZE, 10);
        CFile file;
        ASSERT_TRUE(file.Open(path.c_str(), kRewrite));
        cause = ThrownCause([&] { file.Write("ten bytes!and more", 18); });
    }
    std::signal(SIGXFSZ, before);
    // The system took ten bytes at first and gave its reason only when asked for the rest.
    EXPECT_EQ(cause, CFileException::genericException);
    EXPECT_EQ(Content(), "ten bytes!");
}

TEST_F(CFileTest, tellsWhenNoMoreFilesCanBeOpened)
{
    CFile file;
    CFileException error;
    // The sanitizer looks an object's type up the first time, which takes file handles itself.
    EXPECT_FALSE(file.Open((directory / "missing").c_str(), CFile::modeRead, &error));
    const LimitScope limit(RLIMIT_NOFILE, 0);
    EXPECT_FALSE(file.Open(path.c_str(), kRewrite, &error));
    EXPECT_EQ(error.m_cause, CFileException::tooManyOpenFiles);
}

TEST_F(CFileTest, aDeviceThatFailsIsToldAsSuch)
{
    // Nothing is mapped at the start of the address space.
    CFile file;
    char byte = 0;
    ASSERT_TRUE(file.Open("/proc/self/mem", CFile::modeRead));
    EXPECT_EQ(ThrownCause([&] { file.Read(&byte, 1); }), CFileException::hardIO);
}

TEST_F(CFileTest, aFileThatIsNotOpenCannotBeUsed)
{
    CFile file;
    char byte = 0;
    EXPECT_EQ(ThrownCause([&] { file.SeekToEnd(); }), CFileException::invalidFile);
    EXPECT_EQ(ThrownCause([&] { file.Write("x", 1); }), CFileException::invalidFile);
    EXPECT_EQ(ThrownCause([&] { file.Read(&byte, 1); }), CFileException::invalidFile);
    EXPECT_EQ(ThrownCause([&] { file.Close(); }), std::nullopt);
}

TEST_F(CFileTest, aFileOpenForTheOtherPurposeCannotBeUsed)
{
    WriteContent("x");
    CFile reading;
    CFile writing;
    char byte = 0;
    ASSERT_TRUE(reading.Open(path.c_str(), CFile::modeRead));
    ASSERT_TRUE(writing.Open(path.c_str(), CFile::modeWrite));
    EXPECT_EQ(ThrownCause([&] { reading.Write("y", 1); }), CFileException::invalidFile);
    EXPECT_EQ(ThrownCause([&] { writing.Read(&byte, 1); }), CFileException::invalidFile);
}

TEST_F(CFileTest, aPipeHasNoEnd)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    CFile file;
    ASSERT_TRUE(file.Open(("/proc/self/fd/" + std::to_string(ends[0])).c_str(), CFile::modeRead));
    EXPECT_EQ(ThrownCause([&] { file.SeekToEnd(); }), CFileException::badSeek);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(CFileTest, oneWriterKeepsOthersOutAndItsContentSafe)
{
    CFile writer;
    ASSERT_TRUE(writer.Open(path.c_str(), kRewrite | CFile::shareDenyWrite));
    writer.Write("precious", 8);
    EXPECT_EQ(CauseOfOpening(path, kRewrite | CFile::shareDenyWrite), CFileException::sharingViolation);
    EXPECT_EQ(CauseOfOpening(path, kRewrite | CFile::shareExclusive), CFileException::sharingViolation);
    EXPECT_EQ(CauseOfOpening(path, CFile::modeRead | CFile::shareDenyWrite), CFileException::sharingViolation);
    EXPECT_EQ(Content(), "precious");
    CFile reader;
    EXPECT_TRUE(reader.Open(path.c_str(), CFile::modeRead | CFile::shareDenyNone));
    writer.Close();
    EXPECT_TRUE(writer.Open(path.c_str(), CFile::modeWrite | CFile::shareExclusive));
}

TEST_F(CFileTest, readersThatDenyWritingShareTheFile)
{
    WriteContent("x");
    CFile first;
    CFile second;
    EXPECT_TRUE(first.Open(path.c_str(), CFile::modeRead | CFile::shareDenyWrite));
    EXPECT_TRUE(second.Open(path.c_str(), CFile::modeRead | CFile::shareDenyWrite));
    EXPECT_EQ(CauseOfOpening(path, CFile::modeWrite | CFile::shareDenyWrite), CFileException::sharingViolation);
    EXPECT_EQ(CauseOfOpening(path, CFile::modeRead | CFile::shareExclusive), CFileException::sharingViolation);
}

TEST_F(CFileTest, programsThatAreStartedDoNotInheritTheFile)
{
    const int next = ::dup(0);
    ASSERT_NE(next, -1);
    ::close(next);
    CFile file;
    ASSERT_TRUE(file.Open(path.c_str(), kRewrite));
    EXPECT_EQ(::fcntl(next, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

} // namespace
