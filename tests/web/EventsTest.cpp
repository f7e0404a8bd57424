#include "web/Events.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace web;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

class EventsTest : public testing::Test {
protected:
    /// What one request gets; status 0: nothing yet.
    class Client final : public Responder::Sink {
    public:
        void Take(Response response) override { answer = std::move(response); }

        Response answer{0, "", ""};
    };

    std::shared_ptr<Client> Wait(const std::string& session, const std::string& last)
    {
        auto client = std::make_shared<Client>();
        m_events.Wait(session, last, Responder(client), m_now + 10s);
        return client;
    }

    static std::string IdIn(const Client& client)
    {
        const std::string& body = client.answer.body;
        const std::size_t begin = body.find("id: ") + 4;
        return body.substr(begin, body.find('\n', begin) - begin);
    }

    std::string PresentId() { return IdIn(*Wait("s", "")); }

    Events m_events;
    Events::Clock::time_point m_now = Events::Clock::now();
};

TEST_F(EventsTest, GreetsWhoComesFirst)
{
    m_events.Begin(7);
    const Response answer = Wait("s", "")->answer;
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.type, "text/event-stream");
    EXPECT_THAT(answer.body, HasSubstr("event: hello\ndata: {\"entry\":7}\n\n"));
    for (const std::string id : {"x.0.0", "0.0", "..", "99999999999999999999.1.1"}) {
        EXPECT_THAT(Wait("s", id)->answer.body, HasSubstr("event: hello")) << id;
    }
    EXPECT_THAT(Wait("s", PresentId() + "1x")->answer.body, HasSubstr("event: hello"));
}

TEST_F(EventsTest, TellsWhatIsNewOnceAndWhatWasMissed)
{
    const std::string first = PresentId();
    const auto waiting = Wait("s", first);
    EXPECT_EQ(waiting->answer.status, 0);
    m_events.NoteOwn(3);
    EXPECT_THAT(waiting->answer.body, HasSubstr("event: changed\ndata: {\"entry\":3}\n\n"));
    EXPECT_THAT(waiting->answer.body, Not(HasSubstr("progress")));
    const std::string second = IdIn(*waiting);
    const auto again = Wait("s", second);
    EXPECT_EQ(again->answer.status, 0);
    m_events.NoteProgress();
    EXPECT_THAT(again->answer.body, HasSubstr("event: progress"));
    EXPECT_THAT(again->answer.body, Not(HasSubstr("changed")));
    const Response missed = Wait("s", first)->answer;
    EXPECT_THAT(missed.body, HasSubstr("event: changed"));
    EXPECT_THAT(missed.body, HasSubstr("event: progress"));
}

TEST_F(EventsTest, TellsOfEntriesOfOthersOnce)
{
    m_events.Begin(5);
    const auto waiting = Wait("s", PresentId());
    EXPECT_FALSE(m_events.NoteEntry(5));
    EXPECT_EQ(waiting->answer.status, 0);
    EXPECT_TRUE(m_events.NoteEntry(6));
    EXPECT_THAT(waiting->answer.body, HasSubstr("\"entry\":6"));
    EXPECT_FALSE(m_events.NoteEntry(6));
    EXPECT_TRUE(m_events.IsKnown(6));
    EXPECT_FALSE(m_events.IsKnown(7));
    m_events.NoteOwn(8);
    EXPECT_FALSE(m_events.NoteEntry(8));
}

TEST_F(EventsTest, EndsWithTheTimeAndTheSession)
{
    const std::string id = PresentId();
    const auto one = Wait("a", id);
    const auto other = Wait("b", id);
    EXPECT_TRUE(m_events.IsAwaited());
    m_events.Expire(m_now + 9s);
    m_events.End("a");
    EXPECT_EQ(one->answer.status, 204);
    EXPECT_EQ(other->answer.status, 0);
    m_events.Expire(m_now + 10s);
    EXPECT_EQ(other->answer.status, 200);
    EXPECT_THAT(other->answer.body, Not(HasSubstr("data")));
    EXPECT_FALSE(m_events.IsAwaited());
}

TEST_F(EventsTest, LetsTheOldestOfTooManyGo)
{
    const std::string id = PresentId();
    const auto alien = Wait("b", id);
    std::vector<std::shared_ptr<Client>> clients;
    for (std::size_t i = 0; i <= Events::kMostOfSession; ++i) {
        clients.push_back(Wait("a", id));
    }
    EXPECT_EQ(clients.at(0)->answer.status, 204);
    EXPECT_EQ(clients.at(1)->answer.status, 0);
    EXPECT_EQ(alien->answer.status, 0);
    m_events.NoteProgress();
    EXPECT_EQ(clients.back()->answer.status, 200);
    EXPECT_EQ(alien->answer.status, 200);
}

} // namespace
