#include "management/board/Board.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <nlohmann/json.hpp>

using namespace console;
using namespace management;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

// The texts between quotes as they stand in a statement.
constexpr const char* kNotice =
    "INSERT INTO Kel_Board VALUES ('n''1\\', 'a''b\\', 'S''ubject\\', '2013-05-07 09:03:00', 'Two''s\nlines\\')";
constexpr const char* kOther = "INSERT INTO Kel_Board VALUES ('2', 'amy', 'Other', '2014-01-01 00:00:00', NULL)";
constexpr const char* kAttachments =
    R"(INSERT INTO Kel_Board_Attach VALUES ('n''1\', 'f''\.txt'), ('n''1\', 'g'), ('2', 'h'))";
constexpr const char* kReplies = R"(INSERT INTO Kel_Board_Revert VALUES
    (7, 'n''1\', 'r''\', '2013-05-08 00:00:00', 'c''\'), (8, '2', 'r', NULL, 'd'))";
constexpr const char* kReaders = R"(INSERT INTO Kel_Board_Visiter VALUES
    (3, 'n''1\', 'user''17\', 'Amy''s\', '2013-05-09 00:00:00', 1), (4, '2', '', '', NULL, 0))";

constexpr const char* kAll[] = {kNotice, kOther, kAttachments, kReplies, kReaders};

class BoardTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    void Fill()
    {
        for (const char* sql : kAll) {
            m_conn.Execute(sql);
        }
    }

    CAConnect m_conn;
    Board m_board{m_conn};
};

class BoardConsoleTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        for (const char* sql : kAll) {
            Execute(sql);
        }
    }
};

} // namespace

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(BoardTest, AnEmptyBoardHasNoNotices)
{
    EXPECT_THAT(m_board.List(), IsEmpty());
    EXPECT_EQ(CodeOf([&] { FindNotices(m_board, {kHard}); }), Exit::notFound);
}

TEST_F(BoardTest, ANoticeIsFoundByAnyIdAndHasAllItsParts)
{
    Fill();
    const Notice notice = FindNotices(m_board, {"n'1\\"}).front();
    EXPECT_EQ(notice.subject, "S'ubject\\");
    EXPECT_EQ(notice.creator, "a'b\\");
    EXPECT_EQ(notice.created, "2013-05-07 09:03:00");
    EXPECT_EQ(m_board.Content(notice.id), "Two's\nlines\\");
    const NoticeParts parts = m_board.Parts(notice.id);
    EXPECT_THAT(parts.attachments, ElementsAre("f'\\.txt", "g"));
    ASSERT_EQ(parts.replies.size(), 1U);
    EXPECT_EQ(parts.replies.front().id, 7);
    EXPECT_EQ(parts.replies.front().content, "c'\\");
    ASSERT_EQ(parts.readers.size(), 1U);
    EXPECT_EQ(parts.readers.front().item, "user'17\\");
    EXPECT_EQ(parts.readers.front().name, "Amy's\\");
    EXPECT_EQ(parts.readers.front().flag, 1);
}

TEST_F(BoardTest, DeletingTakesThePartsAndNothingOfOthers)
{
    Fill();
    m_board.Delete("n'1\\");
    EXPECT_THAT(m_board.List(), ElementsAre(testing::Field(&Notice::id, "2")));
    const NoticeParts gone = m_board.Parts("n'1\\");
    EXPECT_EQ(gone.attachments.size() + gone.replies.size() + gone.readers.size(), 0U);
    const NoticeParts kept = m_board.Parts("2");
    EXPECT_EQ(kept.attachments.size() + kept.replies.size() + kept.readers.size(), 3U);
}

TEST_F(BoardTest, AConnectionThatIsGoneIsNoEmptyBoard)
{
    m_conn.Close();
    EXPECT_EQ(CodeOf([&] { m_board.List(); }), Exit::database);
}

TEST_F(BoardTest, ARefusedWriteSaysWhy)
{
    Fill();
    m_conn.Execute("PRAGMA query_only = 1");
    EXPECT_EQ(CodeOf([&] { m_board.Delete("2"); }), Exit::database);
}

// ---- The commands ---------------------------------------------------------------------------------------------------

TEST_F(BoardConsoleTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"list", "show", "delete"}) {
        EXPECT_THAT(Done({"board", verb, "--help"}), HasSubstr("Examples:\n  qvadmin board")) << verb;
    }
}

TEST_F(BoardConsoleTest, NoticesAreListedTheLatestFirst)
{
    EXPECT_EQ(Done({"board", "list", "-o", "csv"}), "id,subject,creator,created\n2,Other,amy,2014-01-01 00:00:00\n"
                                                    "n'1\\,S'ubject\\,a'b\\,2013-05-07 09:03:00\n");
    EXPECT_EQ(Done({"board", "list", "--limit", "1", "-o", "plain"}), "2\tOther\tamy\t2014-01-01 00:00:00\n");
    ExpectRefusal({"board", "list", "--limit", "-1"}, 2, "--limit");
}

TEST_F(BoardConsoleTest, ANoticeIsShownWithAllThatBelongsToIt)
{
    EXPECT_EQ(nlohmann::json::parse(Done({"board", "show", "n'1\\", "-o", "json"})), nlohmann::json::parse(R"({
        "id": "n'1\\", "subject": "S'ubject\\", "creator": "a'b\\", "created": "2013-05-07 09:03:00",
        "content": "Two's\nlines\\",
        "attachments": [{"file": "f'\\.txt"}, {"file": "g"}],
        "replies": [{"id": 7, "creator": "r'\\", "created": "2013-05-08 00:00:00", "content": "c'\\"}],
        "readers": [{"id": 3, "item": "user'17\\", "name": "Amy's\\", "read": "2013-05-09 00:00:00", "flag": 1}]})"));
    EXPECT_THAT(Done({"board", "show", "n'1\\"}),
                AllOf(HasSubstr("replies      1\n"), HasSubstr("\nattachments:\nfile\nf'\\.txt\ng\n"),
                      HasSubstr("\nreplies:\nid  creator"), HasSubstr("\nreaders:\nid  item")));
    EXPECT_EQ(Done({"board", "show", "2", "-o", "csv"}),
              "id,subject,creator,created,content,attachments,replies,readers\n"
              "2,Other,amy,2014-01-01 00:00:00,,1,1,1\n");
    ExpectRefusal({"board", "show", "3"}, 3, "there is no notice '3'");
}

TEST_F(BoardConsoleTest, DeletingCountsAsksAndTakesAll)
{
    const ChildResult asked = Run({"board", "delete", "n'1\\"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err, StartsWith("delete n'1\\ 'S'ubject\\', with 2 attachments, 1 reply, 1 reader\n"));
    ExpectRefusal({"board", "delete", "2", "3", "--yes"}, 3, "there is no notice '3'");
    ExpectRefusal({"board", "delete", "2", "3", "4", "--yes"}, 3,
                  "there are no notices '3', '4'; `qvadmin board list`");
    EXPECT_THAT(Done({"board", "list", "-o", "plain"}), HasSubstr("2\tOther"));
    m_options.terminal = true;
    const ChildResult done = RunWith("y\n", {"board", "delete", "n'1\\", "2", "2"});
    EXPECT_EQ(done.exit, 0);
    EXPECT_THAT(done.err, AllOf(HasSubstr("Delete 2 notices? [y/N]"), HasSubstr("deleted 2 notices")));
    m_options.terminal = false;
    EXPECT_EQ(Done({"board", "list", "-o", "plain"}), "");
}

TEST_F(BoardConsoleTest, ADeletionThatFailsLeavesAllAsItWas)
{
    Execute("CREATE TRIGGER no BEFORE DELETE ON Kel_Board WHEN old.Col_ID = '2' BEGIN SELECT RAISE(ABORT, 'kept'); "
            "END");
    ExpectRefusalAfterPlan({"board", "delete", "n'1\\", "2", "--yes"}, 6, "kept");
    EXPECT_THAT(Done({"board", "show", "n'1\\", "-o", "csv"}), HasSubstr(",2,1,1\n"));
}
