#include "console/OutputFile.h"

#include "console/ExitCode.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace console;
using namespace management;
using testing::AllOf;
using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

class OutputFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "output-XXXXXX";
        m_folder = ::mkdtemp(pattern.data());
    }

    void TearDown() override { fs::remove_all(m_folder); }

    [[nodiscard]] std::string Path(const std::string& name) const { return m_folder + "/" + name; }

    void Write(const std::string& name, const std::string& text) const { std::ofstream(Path(name)) << text; }

    [[nodiscard]] std::string Read(const std::string& name) const
    {
        std::ifstream file(Path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    [[nodiscard]] std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder)) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    [[nodiscard]] OutputFile::Description Described(const std::string& name) const
    {
        return {Path(name), "--to", "a,b", {}};
    }

    void WriteWhole(const std::string& name, const std::string& row) const
    {
        OutputFile file(Described(name));
        file.Stream() << row << '\n';
        file.Finish();
    }

    /// What making the file is refused with. Nothing in the folder may change.
    std::string RefusalOf(const OutputFile::Description& description, Exit code)
    {
        const std::vector<std::string> before = Names();
        std::string sentence;
        try {
            const OutputFile file(description);
        } catch (const Error& e) {
            EXPECT_EQ(ExitFor(e.Code()), code) << e.what();
            sentence = e.what();
        }
        EXPECT_EQ(Names(), before);
        return sentence;
    }

    std::string m_folder;
};

using testing::ElementsAre;

} // namespace

TEST_F(OutputFileTest, AppearsUnderItsOwnNameOnceItIsWhole)
{
    {
        OutputFile file(Described("out"));
        EXPECT_EQ(Read("out.partial"), "a,b\n");
        file.Stream() << "1,2\n";
        file.Flush();
        EXPECT_EQ(Read("out.partial"), "a,b\n1,2\n");
        EXPECT_EQ(file.Name(), Path("out.partial"));
        EXPECT_FALSE(fs::exists(Path("out")));
        file.Stream() << "3,4\n";
        file.Finish();
        EXPECT_EQ(file.Name(), Path("out"));
    }
    EXPECT_THAT(Names(), ElementsAre("out"));
    EXPECT_EQ(Read("out"), "a,b\n1,2\n3,4\n");
    EXPECT_EQ(fs::status(Path("out")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(OutputFileTest, ThePreviousFileIsKept)
{
    WriteWhole("out", "1,1");
    WriteWhole("out", "2,2");
    WriteWhole("out", "3,3");
    EXPECT_THAT(Names(), ElementsAre("out", "out.1"));
    EXPECT_EQ(Read("out"), "a,b\n3,3\n");
    EXPECT_EQ(Read("out.1"), "a,b\n2,2\n");
}

TEST_F(OutputFileTest, WhatWasCutShortIsKeptUnderANameThatSaysSo)
{
    WriteWhole("out", "1,1");
    for (const char* row : {"2,2\n", "3,3\n"}) {
        OutputFile file(Described("out"));
        file.Stream() << row;
        file.Flush();
    }
    EXPECT_THAT(Names(), ElementsAre("out", "out.partial", "out.partial.1"));
    EXPECT_EQ(Read("out"), "a,b\n1,1\n");
    EXPECT_EQ(Read("out.partial"), "a,b\n3,3\n");
    EXPECT_EQ(Read("out.partial.1"), "a,b\n2,2\n");
    {
        const OutputFile nothingWritten(Described("out"));
    }
    EXPECT_THAT(Names(), ElementsAre("out", "out.partial.1"));
    EXPECT_EQ(Read("out.partial.1"), "a,b\n3,3\n");
}

TEST_F(OutputFileTest, NoFileOfAnotherKindIsTouched)
{
    for (const char* name : {"out", "out.1", "out.partial", "out.partial.1"}) {
        Write(name, "a,b,c\n");
        EXPECT_THAT(RefusalOf(Described("out"), Exit::conflict),
                    AllOf(HasSubstr(std::string(name) + " is there already"), HasSubstr("another file with --to")));
        EXPECT_EQ(Read(name), "a,b,c\n");
        fs::remove(Path(name));
    }
    Write("out", "");
    WriteWhole("out", "1,1");
    EXPECT_EQ(Read("out"), "a,b\n1,1\n");
}

TEST_F(OutputFileTest, AFileThatAppearsMeanwhileIsNotTouched)
{
    OutputFile file(Described("out"));
    file.Stream() << "1,1\n";
    Write("out", "a letter\n");
    EXPECT_THROW(file.Finish(), Error);
    EXPECT_EQ(Read("out"), "a letter\n");
    EXPECT_EQ(Read("out.partial"), "a,b\n1,1\n");
    EXPECT_EQ(file.Name(), Path("out.partial"));
}

TEST_F(OutputFileTest, LinksDevicesPipesAndDirectoriesAreRefusedByName)
{
    WriteWhole("real", "1,1");
    fs::create_symlink(Path("real"), Path("link"));
    fs::create_symlink(Path("nothing"), Path("dangling"));
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    const auto refusal = [&](const std::string& target) {
        return RefusalOf({target, "--to", "a,b", {}}, Exit::failed);
    };
    EXPECT_THAT(refusal(Path("link")), HasSubstr("it is a symbolic link, not a file"));
    EXPECT_THAT(refusal(Path("dangling")), HasSubstr("it is a symbolic link"));
    EXPECT_THAT(refusal(Path("pipe")), HasSubstr("it is a pipe"));
    EXPECT_THAT(refusal(m_folder), HasSubstr("it is a directory"));
    EXPECT_THAT(refusal("/dev/null"), AllOf(HasSubstr("it is a device"), HasSubstr("- for standard output")));
    EXPECT_THAT(refusal("/dev/stdout"), HasSubstr("it is a symbolic link"));
    EXPECT_THAT(refusal(Path("missing/out")), HasSubstr("No such file or directory; name another file with --to"));
    EXPECT_EQ(Read("real"), "a,b\n1,1\n");
    // A link under the name that is written first leads nowhere either.
    fs::create_symlink(Path("real"), Path("out.partial"));
    EXPECT_THAT(refusal(Path("out")), HasSubstr("out.partial: it is a symbolic link"));
}

TEST_F(OutputFileTest, FilesInUseAreRefusedUnderAnyName)
{
    WriteWhole("real", "1,1");
    fs::create_directory_symlink(m_folder, Path("folder"));
    fs::create_hard_link(Path("real"), Path("other"));
    for (const char* name : {"real", "./real", "folder/real", "other"}) {
        EXPECT_THAT(RefusalOf({Path(name), "--to", "a,b", {{Path("real"), "the letter"}}}, Exit::usage),
                    HasSubstr(" is the letter; name another file with --to"));
    }
    EXPECT_THAT(RefusalOf({Path("folder/new"), "--to", "a,b", {{Path("new"), "the letter"}}}, Exit::usage),
                HasSubstr("is the letter"));
    EXPECT_THAT(RefusalOf({Path("out"), "--to", "a,b", {{Path("out.1"), "the letter"}}}, Exit::usage),
                HasSubstr("out.1 is the letter"));
}

TEST_F(OutputFileTest, TheSecondOfTwoWritersIsRefused)
{
    OutputFile first(Described("out"));
    first.Stream() << "1,1\n";
    EXPECT_THAT(RefusalOf(Described("out"), Exit::conflict), HasSubstr("is being written by another qvadmin"));
    first.Finish();
    EXPECT_EQ(Read("out"), "a,b\n1,1\n");
}
