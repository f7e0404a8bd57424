#include "web/Server.h"

#include "dbaccess/CAConnect.h"
#include "management/CommandData.h"
#include "management/JsonWriter.h"
#include "management/Text.h"
#include "web/Accounts.h"
#include "web/CommandAnswer.h"
#include "web/Events.h"
#include "web/Exports.h"
#include "web/ImportTexts.h"
#include "web/Jobs.h"
#include "web/JsonReader.h"
#include "web/JsonResponse.h"
#include "web/Languages.h"
#include "web/Origins.h"
#include "web/Page.h"
#include "web/Problem.h"
#include "web/SocketAddress.h"
#include "web/Throttle.h"
#include "web/Tokens.h"
#include "web/Totp.h"
#include "web/Worker.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <latch>
#include <mutex>
#include <optional>
#include <sstream>

namespace web {

using namespace management;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kApi = "/api/v1";
constexpr std::string_view kCommandRoute = "/commands/";
/// How long an answer to a wrong password takes at least, so that it does not tell whether there is such a user.
constexpr std::chrono::milliseconds kFailureTime{300};
/// For which the token of the setup is good.
constexpr std::chrono::minutes kSetupTime{15};
constexpr std::chrono::seconds kRefreshPace{10};
/// How long a request for news waits.
constexpr std::chrono::seconds kNewsTime{25};
/// How often the record is looked at for changes of others while somebody waits for news, and after some were found.
constexpr std::chrono::seconds kLookPace{2};
constexpr std::chrono::seconds kLookPauseAfterNews{6};
constexpr double kRequestsASecond = 50;
constexpr double kMostAtOnce = 200;

Problem NotSignedIn() { return {401, "not_signed_in", Translatable("sign in first")}; }

Problem NotFound(const std::string& path) { return {404, "no_route", FillPattern("there is no {}", Quoted(path))}; }

/// What an answer says to browsers beside its content.
class GuardedSink final : public Responder::Sink {
public:
    /// @param language  of what an answer of the API has for people, where it does not say another; empty: it is none.
    GuardedSink(Responder inner, bool isSecure, std::string language)
        : m_inner(std::move(inner)), m_isSecure(isSecure), m_language(std::move(language))
    {
    }

    void Take(Response response) override
    {
        NamedValues& headers = response.headers;
        static const std::string policy = fmt::format(
            "default-src 'none'; script-src 'self' {}; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
            "form-action 'self'; frame-ancestors 'none'; base-uri 'none'; require-trusted-types-for 'script'; "
            "trusted-types 'none'",
            EarlyScriptSource());
        headers.emplace_back("Content-Security-Policy", policy);
        headers.emplace_back("X-Content-Type-Options", "nosniff");
        headers.emplace_back("Referrer-Policy", "no-referrer");
        headers.emplace_back("Cross-Origin-Opener-Policy", "same-origin");
        headers.emplace_back("Cross-Origin-Resource-Policy", "same-origin");
        if (!m_language.empty()) {
            headers.emplace_back("Cache-Control", "no-store");
            headers.emplace_back("Content-Language", response.language.empty() ? m_language : response.language);
            headers.emplace_back("Vary", "Accept-Language");
        }
        if (m_isSecure) {
            headers.emplace_back("Strict-Transport-Security", "max-age=31536000");
        }
        m_inner.Send(std::move(response));
    }

private:
    Responder m_inner;
    bool m_isSecure;
    std::string m_language;
};

std::string RequiredText(const JsonValue& object, std::string_view name)
{
    const JsonValue* member = object.Find(name);
    if (member == nullptr || member->type != JsonValue::Type::text) {
        throw Error(ErrorCode::invalid, FillPattern("{} is required, and is a text", name));
    }
    return member->text;
}

Secret SecretIn(const JsonValue& object)
{
    const std::string text = RequiredText(object, "password");
    if (text.size() > Secret::kLongest) {
        throw Error(ErrorCode::invalid, FillPattern("a password has at most {} bytes", Secret::kLongest));
    }
    return Secret(text);
}

/// @throws Error (invalid) for members beside those that are known.
JsonValue ReadMembers(const std::string& body, std::initializer_list<std::string_view> known)
{
    JsonValue object = ReadJsonObject(body);
    for (const auto& [name, value] : object.members) {
        if (std::ranges::find(known, name) == known.end()) {
            throw Error(ErrorCode::invalid, FillPattern("there is no member {}", Quoted(name)));
        }
    }
    return object;
}

/// Runs what makes an answer; errors become problems.
template <class Make>
Response Guarded(Make make)
{
    try {
        return make();
    } catch (const Error& e) {
        return ResponseOf(ProblemOf(e));
    } catch (const std::bad_alloc&) {
        return ResponseOf(OutOfMemory());
    } catch (const std::exception&) {
        return ResponseOf(ServerFailed());
    }
}

/// How many requests a session has left.
struct Allowance {
    double left = kMostAtOnce;
    Clock::time_point counted;

    bool Take(Clock::time_point now)
    {
        left = std::min(kMostAtOnce, left + std::chrono::duration<double>(now - counted).count() * kRequestsASecond);
        counted = now;
        if (left < 1) {
            return false;
        }
        left -= 1;
        return true;
    }
};

} // namespace

class Server::Site {
public:
    Site(const OpenDirectory& open, ServerOptions options)
        : m_options(std::move(options)),
          m_languages(m_options.catalogues),
          m_open(open),
          m_sessions(m_options.sessions),
          m_reader(open, m_results),
          m_lists([this] { m_reader.Refresh(); }, kRefreshPace)
    {
        const bool needsSetup = NeedsSetup(Connection());
        m_events.Begin(LatestEntry(m_reader.Connection()));
        if (needsSetup) {
            m_setupToken = NewToken();
            m_shownToken = m_setupToken;
            m_setupEnds = m_options.clock() + kSetupTime;
        }
        const bool isSecure = !m_options.http.certificate.empty();
        // Before anybody can ask: what is wrong with the origins comes out here.
        static_cast<void>(Origins(m_options.http.address, 0, isSecure, m_options.origins));
        m_http.emplace(m_options.http,
                       [this](Request request, const Responder& responder) { Handle(std::move(request), responder); });
        m_origins.emplace(m_options.http.address, m_http->Port(), isSecure, m_options.origins);
        m_isReady.count_down();
    }
    Site(const Site&) = delete;
    Site& operator=(const Site&) = delete;
    ~Site()
    {
        // What runs may send its answer; then nothing is left to run for a connection.
        m_commands.Stop();
        m_lists.Stop();
        m_timer.Stop();
        m_http.reset();
    }

    [[nodiscard]] std::uint16_t Port() const { return m_http->Port(); }
    [[nodiscard]] std::string Url() const { return m_origins->First().Text(); }
    [[nodiscard]] const std::string& SetupToken() const { return m_shownToken; }

private:
    /// A request on its way to its answer.
    struct Visit {
        Request request;
        Responder responder;
        Origin origin;
        std::optional<Session> session = {};

        [[nodiscard]] std::string_view CookieName() const { return Site::CookieName(origin); }
    };
    using Route = void (Site::*)(Visit visit);

    static std::string_view CookieName(const Origin& origin) { return origin.isSecure ? "__Host-qv" : "qv"; }

    // ---- On the thread of HTTP --------------------------------------------------------------------------------------

    void Handle(Request request, const Responder& plain)
    {
        m_isReady.wait();
        const Languages::One& language = m_languages.For(request.Header("Accept-Language"));
        // Workers go on in the language in which they were given something to do.
        const Speaking speaking(language.catalogue.get());
        const bool isApi = request.path.starts_with("/api/");
        const std::optional<Origin> origin = m_origins->Of(request);
        const Responder responder(
            std::make_shared<GuardedSink>(plain, origin && origin->isSecure, isApi ? language.tag : ""));
        if (const std::optional<Problem> problem = ReadProxy(request, origin)) {
            responder.Send(ResponseOf(*problem));
        } else if (!origin) {
            responder.Send(ResponseOf({421, "other_host", Translatable("the request is for another host")}));
        } else if (isApi) {
            HandleApi({std::move(request), responder, *origin});
        } else if (request.method != "GET" && request.method != "HEAD") {
            responder.Send(ResponseOf({405, "no_method", Translatable("pages are read with GET")}));
        } else {
            // To look at a page is not to use the session: what it asks for is.
            const std::string cookie = request.Cookie(CookieName(*origin));
            responder.Send(PageAt(request, m_sessions.Use(cookie, m_options.clock(), false).has_value()));
        }
    }

    /// Takes over what a proxy says of its client. @return what stands in the way.
    std::optional<Problem> ReadProxy(Request& request, const std::optional<Origin>& origin) const
    {
        if (m_options.proxy.empty()) {
            return std::nullopt;
        }
        if (request.address != m_options.proxy) {
            return Problem{403, "not_by_proxy", Translatable("this server is reached through its proxy alone")};
        }
        // The last address is the one that the proxy has seen; those before it are what the client says.
        const std::string all = request.Header("X-Forwarded-For");
        const std::size_t comma = all.rfind(',');
        const std::string last = all.substr(comma == std::string::npos ? 0 : all.find_first_not_of(' ', comma + 1));
        const std::string proto = request.Header("X-Forwarded-Proto");
        try {
            request.address = NormalAddress(last);
        } catch (const Error&) {
            return Problem{400, "wrong_proxy",
                           Translatable("the proxy does not say in X-Forwarded-For who its client is")};
        }
        if (origin && !proto.empty() && proto != (origin->isSecure ? "https" : "http")) {
            return Problem{400, "wrong_proxy", Translatable("the proxy's X-Forwarded-Proto does not fit the origin")};
        }
        return std::nullopt;
    }

    void HandleApi(Visit visit)
    {
        struct Row {
            std::string_view method;
            std::string_view path;
            Route route;
            Level level = Level::full; ///< that is needed; none: no session at all
        };
        static constexpr Row kRoutes[] = {
            {"GET", "/health", &Site::Health, Level::none},
            {"POST", "/session", &Site::SignInFor, Level::none},
            {"POST", "/setup", &Site::Setup, Level::none},
            {"GET", "/session", &Site::ShowSession, Level::readOnly},
            {"DELETE", "/session", &Site::SignOut, Level::readOnly},
            {"POST", "/session/step-up", &Site::StepUp, Level::readOnly},
            {"POST", "/session/totp", &Site::BeginTotp, Level::readOnly},
            {"POST", "/session/totp/confirm", &Site::ConfirmTotp, Level::readOnly},
            {"DELETE", "/session/totp", &Site::EndTotp, Level::readOnly},
            {"GET", "/commands", &Site::ListCommands, Level::readOnly},
            {"GET", "/users", &Site::ListUsers, Level::readOnly},
            {"GET", "/tree", &Site::ListTree, Level::readOnly},
            {"GET", "/tree/find", &Site::FindInTree, Level::readOnly},
            {"GET", "/overview", &Site::Overview, Level::readOnly},
            {"POST", "/users/find", &Site::FindNames, Level::readOnly},
            {"GET", "/events", &Site::WaitForNews, Level::readOnly},
            {"POST", kCommandRoute, &Site::Run, Level::readOnly},
            {"POST", "/imports/text", &Site::TakeImportText},
            {"POST", "/imports/look", &Site::LookAtImport},
            {"POST", "/imports", &Site::BeginImport},
            {"GET", "/jobs", &Site::ListJobs, Level::readOnly},
            {"POST", "/jobs/stop", &Site::StopJob, Level::readOnly},
            {"POST", "/jobs/answer", &Site::TakeJobAnswer, Level::readOnly},
            {"GET", "/jobs/file", &Site::ShowJobFile, Level::readOnly},
            {"POST", "/exports", &Site::BeginExport},
            {"GET", "/jobs/report", &Site::ShowJobReport, Level::readOnly},
            {"GET", "/imports", &Site::ListImports, Level::readOnly},
        };
        if (!visit.request.path.starts_with(kApi)) {
            visit.responder.Send(ResponseOf(NotFound(visit.request.path)));
            return;
        }
        const std::string_view path = std::string_view(visit.request.path).substr(kApi.size());
        const std::string_view method = visit.request.method == "HEAD" ? "GET" : std::string_view(visit.request.method);
        const auto isThere = [&path](const Row& row) {
            return row.path.ends_with('/') ? path.starts_with(row.path) : path == row.path;
        };
        const auto* const row =
            std::ranges::find_if(kRoutes, [&](const Row& each) { return each.method == method && isThere(each); });
        if (row == std::end(kRoutes)) {
            const bool isPath = std::ranges::any_of(kRoutes, isThere);
            visit.responder.Send(
                ResponseOf(isPath ? Problem{405, "no_method", Translatable("this is not asked for in that way")}
                                  : NotFound(visit.request.path)));
            return;
        }
        if (const std::optional<Problem> problem = Refusal(visit, row->level)) {
            visit.responder.Send(ResponseOf(*problem));
            return;
        }
        (this->*row->route)(std::move(visit));
    }

    /// What stands in the way of a request whatever it asks for; fills in its session.
    std::optional<Problem> Refusal(Visit& visit, Level needed)
    {
        const Request& request = visit.request;
        const bool isChanging = request.method == "POST" || request.method == "DELETE";
        if (isChanging && !IsSameOrigin(request, visit.origin)) {
            return Problem{403, "cross_site", Translatable("the request comes from another site")};
        }
        if (request.method == "POST" && !request.Header("Content-Type").starts_with("application/json")) {
            return Problem{415, "no_json", Translatable("the body is to be application/json")};
        }
        const Clock::time_point now = m_options.clock();
        // A page that nobody uses still asks what is new.
        const bool isUse = request.path != "/api/v1/events" && request.Header("X-Unattended").empty();
        visit.session = m_sessions.Use(request.Cookie(visit.CookieName()), now, isUse);
        if (needed == Level::none) {
            return std::nullopt;
        }
        if (!visit.session) {
            return NotSignedIn();
        }
        if (isChanging && !IsSame(request.Header("X-CSRF-Token"), visit.session->csrf)) {
            return Problem{403, "no_csrf_token", Translatable("the request lacks the token of its session")};
        }
        std::erase_if(m_allowances,
                      [now](const auto& entry) { return now - entry.second.counted > std::chrono::seconds(10); });
        if (!m_allowances.try_emplace(visit.session->account.login, Allowance{.counted = now})
                 .first->second.Take(now)) {
            return Problem{429, "too_many", Translatable("too many requests; wait a moment")};
        }
        // What is about the session itself, one-time codes among it.
        const bool isOwn = request.path.starts_with(fmt::format("{}/session", kApi));
        if (MustAddTotp(*visit.session) && !isOwn) {
            return Problem{403, "totp_required",
                           Translatable("this server asks everybody for one-time codes; set them up first")};
        }
        return RefusalByLevel(visit, needed, visit.request.path);
    }

    [[nodiscard]] bool MustAddTotp(const Session& session) const
    {
        return m_options.requiresTotp && !session.account.hasTotp;
    }

    /// What refuses somebody without the level that something needs. @param what  for the sentence.
    static std::optional<Problem> RefusalByLevel(const Visit& visit, Level needed, std::string_view what)
    {
        // The session ends when the user's level becomes another.
        const Level own = visit.session->account.level;
        return own >= needed
                   ? std::nullopt
                   : std::optional(Problem{403, kNotAllowed, FillPattern("{} is not for {}", what, WithArticle(own))});
    }

    void Health(Visit visit) { visit.responder.Send({200, "application/json", R"({"ok":true})"}); }

    void ShowSession(Visit visit)
    {
        InCommands(std::move(visit),
                   [this](CAConnect& conn, const Visit& asked) { return SessionAnswer(*asked.session, conn); });
    }

    void SignOut(Visit visit)
    {
        m_sessions.End(visit.session->key);
        m_events.End(visit.session->id);
        Log("sign_out", visit.session->account.login, visit.request.address, "");
        visit.responder.Send({200, "application/json", R"({"v":1})", {{"Set-Cookie", NoCookie(visit)}}});
    }

    void ListCommands(Visit visit)
    {
        InCommands(std::move(visit), [](CAConnect& /*conn*/, const Visit& asked) {
            return JsonResponse([&](JsonWriter& json) {
                json.WriteName("commands");
                json.BeginArray();
                for (const Command& command : Commands()) {
                    if (HasRoute(command) && asked.session->account.level >= LeastLevel(command)) {
                        WriteAsData(command, json, false);
                    }
                }
                json.End();
                WriteNames(json);
            });
        });
    }

    /// Writes what people read for the names of columns and parameters, where that is not the name.
    static void WriteNames(JsonWriter& json)
    {
        json.WriteName("names");
        json.BeginObject();
        if (const Language* language = Speaking::Present()) {
            for (const std::string& name : NamesIn(Commands())) {
                if (std::string found = language->FindName(name); found != name) {
                    json.WriteMember(name, TextValue(std::move(found)));
                }
            }
        }
        json.End();
    }

    void ListUsers(Visit visit)
    {
        InLists(std::move(visit),
                [this](const Visit& asked) { return m_reader.Users(asked.request, asked.session->id); });
    }
    void FindNames(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            const JsonValue body = ReadMembers(asked.request.body, {"names"});
            const JsonValue* given = body.Find("names");
            if (given == nullptr || given->type != JsonValue::Type::array) {
                throw Error(ErrorCode::invalid, "names is required, and is an array of texts");
            }
            std::vector<std::string> names;
            for (const JsonValue& name : given->items) {
                if (name.type != JsonValue::Type::text) {
                    throw Error(ErrorCode::invalid, "names is an array of texts");
                }
                names.push_back(name.text);
            }
            return m_reader.FindNames(names, asked.session->id);
        });
    }
    void ListTree(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) { return m_reader.Tree(asked.request); });
    }
    void FindInTree(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) { return m_reader.FindInTree(asked.request); });
    }
    void Overview(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& /*asked*/) { return m_reader.Overview(); });
    }

    // ---- News -------------------------------------------------------------------------------------------------------

    void WaitForNews(Visit visit)
    {
        m_lists.Post([this, visit = std::move(visit)] {
            const Response refusal = Guarded([&] {
                return IsStillGood(m_reader.Connection(), *visit.session) ? Response() : ResponseOf(NotSignedIn());
            });
            if (refusal.status != Response().status) {
                visit.responder.Send(refusal);
                return;
            }
            const Clock::time_point until = Clock::now() + kNewsTime;
            m_events.Wait(visit.session->id, visit.request.Header("Last-Event-ID"), visit.responder, until);
            m_timer.PostAt(until, [this, until] { m_events.Expire(until); });
            if (!std::exchange(m_isLooking, true)) {
                LookForNews();
            }
        });
    }

    /// Looks whether others have changed something, again and again while somebody waits. On the lists' thread.
    void LookForNews()
    {
        bool isNews = false;
        static_cast<void>(Guarded([&] {
            isNews = m_events.NoteEntry(LatestEntry(m_reader.Connection()));
            return Response();
        }));
        if (isNews) {
            m_reader.NoteChange();
        }
        m_reader.Refresh();
        m_lists.PostAt(Clock::now() + (isNews ? kLookPauseAfterNews : kLookPace), [this] {
            m_isLooking = m_events.IsAwaited();
            if (m_isLooking) {
                LookForNews();
            }
        });
    }

    void Run(Visit visit)
    {
        const std::string path = visit.request.path.substr(kApi.size() + kCommandRoute.size());
        const Command* command = FindCommand(path);
        if (command == nullptr) {
            visit.responder.Send(ResponseOf(
                {404, "no_route",
                 FillPattern("{} cannot be run here; commands that show secrets or work on files are for qvadmin in a "
                             "shell",
                             Quoted(path))}));
            return;
        }
        // With which arguments it only reads is not known yet.
        const Level least = command->handler.isQuestion == nullptr ? LeastLevel(*command) : Level::readOnly;
        if (const std::optional<Problem> problem = RefusalByLevel(visit, least, PathText(*command))) {
            visit.responder.Send(ResponseOf(*problem));
            return;
        }
        InCommands(std::move(visit),
                   [this, command](CAConnect& conn, const Visit& asked) { return RunFor(conn, *command, asked); });
    }

    // ---- Imports ----------------------------------------------------------------------------------------------------

    void TakeImportText(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            const JsonValue body = ReadMembers(asked.request.body, {"text", "first"});
            const std::size_t length =
                m_texts.AddText(asked.session->id, RequiredText(body, "text"), MemberFlag(body, "first"));
            return JsonResponse(
                [&](JsonWriter& json) { json.WriteMember("bytes", static_cast<std::int64_t>(length)); });
        });
    }

    void LookAtImport(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            const char delimiter = DelimiterIn(ReadMembers(asked.request.body, {"delimiter"}));
            return JsonResponse([&](JsonWriter& json) { m_texts.WriteLook(json, asked.session->id, delimiter); });
        });
    }

    void BeginImport(Visit visit)
    {
        InCommands(std::move(visit), [this](CAConnect& /*conn*/, const Visit& asked) {
            const JsonValue body = ReadMembers(
                asked.request.body,
                {"columns", "delimiter", "dry_run", "reason", "update", "allow_privileges", "departments", "make_view",
                 "no_new_groups", "date_format", "clear_empty", "sync", "scope", "leavers", "max_leavers", "agreed"});
            const bool isDeleting = MemberText(body, "leavers") == "delete" && !MemberFlag(body, "dry_run");
            if ((isDeleting || MemberFlag(body, "allow_privileges")) &&
                !m_sessions.IsConfirmed(*asked.session, m_options.clock())) {
                return ResponseOf(PasswordRequired());
            }
            const std::string& login = asked.session->account.login;
            const std::shared_ptr<Import> import = m_texts.ImportOf(asked.session->id, login, body);
            const auto work = [import](CAConnect& conn, JobControl& control) { return import->Run(conn, control); };
            return Post({"user import", login, work, import}, asked.request.address, "user import");
        });
    }

    // ---- Jobs -------------------------------------------------------------------------------------------------------

    /// Has something that runs long done on the commands' thread, one after the other: while one lets other commands
    /// have their turn, the next one waits.
    void PostJob(Worker::Task task)
    {
        m_commands.Post([this, task = std::move(task)] {
            m_waitingJobs.push_back(task);
            if (std::exchange(m_isInJob, true)) {
                return;
            }
            while (!m_waitingJobs.empty()) {
                const Worker::Task next = std::move(m_waitingJobs.front());
                m_waitingJobs.pop_front();
                next();
            }
            m_isInJob = false;
        });
    }

    /// On the commands' thread.
    Response BeginJob(std::shared_ptr<CommandRequest> asked, const Visit& visit, const Caller& caller)
    {
        const Session& session = *visit.session;
        const std::string what = PathText(asked->command);
        const auto work = [asked, caller](CAConnect& conn, JobControl& control) {
            return RunCommandAsJob(conn, *asked, caller, control);
        };
        return Post({what, session.account.login, work}, visit.request.address, asked->arguments->Text());
    }

    void BeginExport(Visit visit)
    {
        InCommands(std::move(visit), [this](CAConnect& /*conn*/, const Visit& asked) {
            const ExportOrder order(ReadMembers(asked.request.body, {"format", "in", "base"}));
            const std::string& login = asked.session->account.login;
            const std::string text = fmt::format("export --format {}", order.format);
            Log("export", login, asked.request.address, text);
            const auto work = [order](CAConnect& conn, JobControl& control) { return Export(conn, order, control); };
            return Post({"export", login, work}, asked.request.address, text);
        });
    }

    /// @param text  of the log.
    Response Post(Job::Order order, const std::string& address, const std::string& text)
    {
        const std::shared_ptr<Job> job = m_jobs.Add(std::move(order));
        PostJob([this, job, address, text] { RunJob(*job, address, text); });
        return JsonResponse([&](JsonWriter& json) {
            json.WriteName("job");
            json.BeginObject();
            job->Write(json);
            json.End();
        });
    }

    void RunJob(Job& job, const std::string& address, const std::string& text)
    {
        const Speaking speaking(job.ItsLanguage());
        bool isChange = false;
        const auto written = [&](const Written& what) {
            isChange = isChange || what.isAnything;
            NoteWritten(what);
        };
        const auto between = [this] {
            m_events.NoteProgress();
            m_commands.RunWaiting();
        };
        const Response opened = Guarded([&] {
            const std::shared_ptr<CAConnect> conn = m_open();
            m_events.NoteProgress();
            job.Run(*conn, {between, written, [this] { return m_commands.IsEnding(); }});
            return Response();
        });
        if (opened.status != Response().status) {
            job.Fail(opened);
        }
        m_events.NoteProgress();
        if (isChange) {
            Log("change", job.Login(), address, text);
        }
    }

    void ListJobs(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            return JsonResponse([&](JsonWriter& json) {
                json.WriteName("jobs");
                json.BeginArray();
                for (const std::shared_ptr<Job>& job : m_jobs.All()) {
                    json.BeginObject();
                    job->Write(json);
                    json.WriteMember("own", job->Login() == asked.session->account.login);
                    json.End();
                }
                json.End();
            });
        });
    }

    void StopJob(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            JobOf(IdIn(asked), asked)->Stop();
            return JsonResponse([](JsonWriter& /*json*/) {});
        });
    }

    /// What the job has come to, for who has begun it.
    void TakeJobAnswer(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            const std::shared_ptr<Job> job = JobOf(IdIn(asked), asked);
            if (job->Login() != asked.session->account.login) {
                return ResponseOf(
                    {403, kNotAllowed, Translatable("somebody else has begun this job, and gets its answer")});
            }
            std::optional<Response> answer = job->TakeAnswer();
            if (!answer) {
                throw Error(ErrorCode::conflict, job->IsOver()
                                                     ? Translatable("the answer of this job was given already")
                                                     : Translatable("this job is not over yet"));
            }
            answer->language = m_languages.TagOf(job->ItsLanguage());
            return std::move(*answer);
        });
    }

    /// What an export has come to, for who has begun it, as often as it is wanted.
    void ShowJobFile(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            const std::shared_ptr<Job> job = JobOf(asked.request.Parameter("id"), asked);
            std::optional<Response> file = job->File();
            if (!file || job->Login() != asked.session->account.login) {
                throw Error(ErrorCode::notFound, "this job has no file for you");
            }
            return std::move(*file);
        });
    }

    void ShowJobReport(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            const std::shared_ptr<Job> job = JobOf(asked.request.Parameter("id"), asked);
            const bool isFailed = asked.request.Parameter("failed") == "1";
            return CsvResponse(job->Report(isFailed), fmt::format("{}-{}-{}.csv", job->ItsImport() ? "import" : "job",
                                                                  job->Id(), isFailed ? "failed" : "report"));
        });
    }

    static Response CsvResponse(std::string text, const std::string& name)
    {
        return {200,
                "text/csv; charset=utf-8",
                std::move(text),
                {{"Content-Disposition", fmt::format("attachment; filename=\"{}\"", name)}}};
    }

    /// The member "id" of a body.
    static std::string IdIn(const Visit& asked)
    {
        const JsonValue body = ReadMembers(asked.request.body, {"id"});
        const JsonValue* id = body.Find("id");
        return id == nullptr ? "" : id->text;
    }

    /// A job that somebody may see and stop: his own, and with the level full any. @throws Error (notFound).
    [[nodiscard]] std::shared_ptr<Job> JobOf(const std::string& id, const Visit& asked) const
    {
        std::shared_ptr<Job> job = m_jobs.Find(static_cast<int>(binding::ReadNumber("id", id, {}, binding::kInt)));
        const Account& account = asked.session->account;
        if (!job || (job->Login() != account.login && account.level != Level::full)) {
            throw Error(ErrorCode::notFound, FillPattern("there is no job {}", id));
        }
        return job;
    }

    void ListImports(Visit visit)
    {
        InLists(std::move(visit), [this](const Visit& asked) {
            if (!asked.request.Parameter("id").empty()) {
                const std::shared_ptr<Job> job = JobOf(asked.request.Parameter("id"), asked);
                if (!job->ItsImport()) {
                    throw Error(ErrorCode::notFound, FillPattern("job {} is no import", job->Id()));
                }
                return JsonResponse([&](JsonWriter& json) { WriteImport(json, *job, true); });
            }
            return JsonResponse([&](JsonWriter& json) {
                json.WriteName("imports");
                json.BeginArray();
                for (const std::shared_ptr<Job>& job : m_jobs.All()) {
                    if (job->ItsImport()) {
                        json.BeginObject();
                        WriteImport(json, *job, false);
                        json.End();
                    }
                }
                json.End();
            });
        });
    }

    static void WriteImport(JsonWriter& json, const Job& job, bool withRows)
    {
        job.Write(json);
        job.ItsImport()->Write(json, withRows);
    }

    // ---- Signing in -------------------------------------------------------------------------------------------------

    void SignInFor(Visit visit)
    {
        CheckPassword(std::move(visit), {"login", "password", "code"}, [this](const Visit& asked, const SignIn& found) {
            if (asked.session) {
                m_sessions.End(asked.session->key);
            }
            const auto [token, session] = m_sessions.Begin(*found.account, m_options.clock());
            Log("sign_in", session.account.login, asked.request.address, "");
            return WithCookie(asked, token, SessionAnswer(session, Connection()));
        });
    }

    void StepUp(Visit visit)
    {
        CheckPassword(std::move(visit), {"password", "code"}, [this](const Visit& asked, const SignIn& found) {
            const bool isSame = found.account->id == asked.session->account.id;
            return isSame ? Renewed(asked, *found.account, "step_up", {}) : ResponseOf(NotSignedIn());
        });
    }

    /// Gives a session a new token, for who has just shown who he is.
    /// @param codes  recovery codes that the answer shows.
    Response Renewed(const Visit& asked, const Account& account, std::string_view event,
                     const std::vector<std::string>& codes)
    {
        const auto renewed = m_sessions.Confirm(asked.session->key, account, m_options.clock());
        if (!renewed) {
            return ResponseOf(NotSignedIn());
        }
        Log(event, account.login, asked.request.address, "");
        return WithCookie(asked, renewed->first, SessionAnswer(renewed->second, Connection(), codes));
    }

    using OnRight = std::function<Response(const Visit&, const SignIn&)>;
    /// What is checked, on its way from thread to thread; without a value until it was read.
    using GivenCredentials = std::shared_ptr<std::optional<Credentials>>;

    /// Has the password of a request checked, when and as often as the throttle allows.
    void CheckPassword(Visit visit, std::initializer_list<std::string_view> members, OnRight onRight)
    {
        const auto given = std::make_shared<std::optional<Credentials>>();
        const bool isNamed = std::ranges::find(members, "login") != members.end();
        const Responder responder = visit.responder;
        const Response problem = Guarded([&] {
            const JsonValue body = ReadMembers(visit.request.body, members);
            given->emplace(Credentials{isNamed ? RequiredText(body, "login") : visit.session->account.login,
                                       SecretIn(body), MemberText(body, "code")});
            return Response();
        });
        visit.request.body.clear();
        if (!*given) {
            responder.Send(problem);
            return;
        }
        const Clock::time_point now = Clock::now();
        std::optional<Clock::duration> delay;
        {
            const std::lock_guard lock(m_mutex);
            delay = m_throttle.Begin((*given)->login, visit.request.address, now);
        }
        if (!delay) {
            Response refusal = ResponseOf({429, "too_many", Translatable("too many tries; wait a moment")});
            refusal.headers.emplace_back("Retry-After", "5");
            responder.Send(std::move(refusal));
            return;
        }
        const Clock::time_point begin = now + *delay;
        m_timer.PostAt(begin, [this, visit = std::move(visit), given, begin, onRight = std::move(onRight)] {
            m_commands.Post([this, visit, given, begin, onRight] { SendChecked(visit, **given, begin, onRight); });
        });
    }

    /// What stands in the way of somebody who is not let in.
    static Problem ProblemOf(const SignIn& found)
    {
        switch (found.outcome) {
        case SignIn::Outcome::codeMissing:
            return {401, "code_required",
                    Translatable("enter the one-time code that your app shows, or a recovery code")};
        case SignIn::Outcome::codeWrong:
            return {401, "wrong_code", Translatable("the code is wrong, or was used before")};
        case SignIn::Outcome::refused:
            return {403, "not_let_in", found.reason};
        default:
            return {401, "wrong_password", Translatable("the login name or the password is wrong")};
        }
    }

    static Throttle::Outcome ThrottledAs(SignIn::Outcome outcome)
    {
        switch (outcome) {
        case SignIn::Outcome::codeMissing:
            return Throttle::Outcome::unfinished;
        case SignIn::Outcome::codeWrong:
        case SignIn::Outcome::wrong:
            return Throttle::Outcome::wrong;
        default:
            return Throttle::Outcome::right;
        }
    }

    /// On the commands' thread.
    void SendChecked(const Visit& visit, const Credentials& given, Clock::time_point begin, const OnRight& onRight)
    {
        Throttle::Outcome outcome = Throttle::Outcome::wrong;
        const Response response = Guarded([&] {
            const SignIn found = CheckSignIn(Connection(), given, m_options.wallClock());
            outcome = ThrottledAs(found.outcome);
            if (found.hasUsedRecoveryCode) {
                Log("recovery_code_used", given.login, visit.request.address, "");
            }
            if (found.account) {
                return onRight(visit, found);
            }
            const Problem problem = ProblemOf(found);
            if (found.outcome != SignIn::Outcome::codeMissing) {
                Log("sign_in_failed", given.login, visit.request.address,
                    found.outcome == SignIn::Outcome::wrong ? "" : problem.detail);
            }
            return ResponseOf(problem);
        });
        {
            const std::lock_guard lock(m_mutex);
            m_throttle.End(given.login, visit.request.address, outcome, Clock::now());
        }
        if (outcome == Throttle::Outcome::wrong) {
            m_timer.PostAt(begin + kFailureTime, [visit, response] { visit.responder.Send(response); });
        } else {
            visit.responder.Send(response);
        }
    }

    // ---- One-time codes ---------------------------------------------------------------------------------------------

    /// Answers on the commands' thread to who has given the password lately. @param make  as InCommands has it.
    template <class Make>
    void InCommandsConfirmed(Visit visit, Make make)
    {
        InCommands(std::move(visit), [this, make = std::move(make)](CAConnect& conn, const Visit& asked) {
            return m_sessions.IsConfirmed(*asked.session, m_options.clock()) ? make(conn, asked)
                                                                             : ResponseOf(PasswordRequired());
        });
    }

    /// Makes up a secret, which is kept once a code of it was given.
    void BeginTotp(Visit visit)
    {
        InCommandsConfirmed(std::move(visit), [this](CAConnect& /*conn*/, const Visit& asked) {
            constexpr std::size_t most = 100;
            static_cast<void>(ReadMembers(asked.request.body, {}));
            if (m_newSecrets.size() >= most) {
                m_newSecrets.clear();
            }
            const std::string& secret = m_newSecrets[asked.session->id] = NewTotpSecret();
            return JsonResponse([&](JsonWriter& json) {
                json.WriteMember("secret", TextValue(secret));
                json.WriteMember("uri", TextValue(TotpUri(secret, asked.session->account.login)));
            });
        });
    }

    void ConfirmTotp(Visit visit)
    {
        InCommandsConfirmed(std::move(visit), [this](CAConnect& conn, const Visit& asked) {
            const JsonValue body = ReadMembers(asked.request.body, {"code"});
            const auto secret = m_newSecrets.find(asked.session->id);
            if (secret == m_newSecrets.end()) {
                throw Error(ErrorCode::conflict, "the secret is no longer kept; begin again");
            }
            const std::vector<std::string> codes = AddTotp(conn, asked.session->account, secret->second,
                                                           RequiredText(body, "code"), m_options.wallClock());
            m_newSecrets.erase(secret);
            return AfterTotp(conn, asked, "totp_added", codes);
        });
    }

    void EndTotp(Visit visit)
    {
        InCommandsConfirmed(std::move(visit), [this](CAConnect& conn, const Visit& asked) {
            RemoveTotp(conn, asked.session->account);
            return AfterTotp(conn, asked, "totp_removed", {});
        });
    }

    /// Other sessions of the user end, for the account has changed; this one goes on.
    Response AfterTotp(CAConnect& conn, const Visit& asked, std::string_view event,
                       const std::vector<std::string>& codes)
    {
        const std::optional<Account> account = FindAccount(conn, asked.session->account.id);
        return account ? Renewed(asked, *account, event, codes) : ResponseOf(NotSignedIn());
    }

    /// The first password, by who has read the token from where the server was started.
    void Setup(Visit visit)
    {
        m_commands.Post([this, visit = std::move(visit)] {
            visit.responder.Send(Guarded([&] {
                const JsonValue body = ReadMembers(visit.request.body, {"token", "password"});
                const bool isGood = !m_setupToken.empty() && m_options.clock() <= m_setupEnds &&
                                    IsSame(RequiredText(body, "token"), m_setupToken);
                if (!isGood) {
                    return ResponseOf(
                        {403, "setup_over",
                         Translatable("this link is no longer good; start the server again for a new one")});
                }
                SetUp(Connection(), SecretIn(body));
                m_setupToken.clear();
                m_reader.NoteChange();
                m_events.NoteOwn(LatestEntry(Connection()));
                Log("setup", "Admin", visit.request.address, "");
                return Response{200, "application/json", R"({"v":1,"login":"Admin"})"};
            }));
        });
    }

    /// @param codes  recovery codes that were made just now.
    [[nodiscard]] Response SessionAnswer(const Session& session, CAConnect& conn,
                                         const std::vector<std::string>& codes = {}) const
    {
        const std::size_t codesLeft = RecoveryCodesLeft(conn, session.account);
        const CString engine = WithDatabaseErrors(conn, [&conn] { return conn.GetEngineName(); });
        const auto seconds = [](Clock::duration time) {
            return std::int64_t{std::chrono::duration_cast<std::chrono::seconds>(time).count()};
        };
        const Clock::duration whole = m_sessions.AllLimits().whole - (m_options.clock() - session.begun);
        return JsonResponse([&](JsonWriter& json) {
            json.WriteMember("id", std::int64_t{session.account.id});
            json.WriteMember("login", TextValue(session.account.login));
            json.WriteMember("name", TextValue(session.account.name));
            json.WriteMember("level", TextValue(std::string(NameOf(session.account.level))));
            json.WriteMember("totp", session.account.hasTotp);
            json.WriteMember("totp_required", MustAddTotp(session));
            json.WriteMember("recovery_codes", static_cast<std::int64_t>(codesLeft));
            if (!codes.empty()) {
                WriteTexts(json, "new_recovery_codes", codes);
            }
            json.WriteMember("csrf", TextValue(session.csrf));
            json.WriteMember("engine", TextValue(std::string(engine.View())));
            json.WriteMember("idle_seconds", seconds(m_sessions.AllLimits().idle));
            json.WriteMember("seconds_left", seconds(whole));
        });
    }

    static Response WithCookie(const Visit& visit, const std::string& token, Response response)
    {
        response.headers.emplace_back("Set-Cookie",
                                      fmt::format("{}={}; {}HttpOnly; SameSite=Strict; Path=/", visit.CookieName(),
                                                  token, visit.origin.isSecure ? "Secure; " : ""));
        return response;
    }
    static std::string NoCookie(const Visit& visit)
    {
        return fmt::format("{}=; {}HttpOnly; SameSite=Strict; Path=/; Max-Age=0", visit.CookieName(),
                           visit.origin.isSecure ? "Secure; " : "");
    }

    // ---- On the threads that know the directory ---------------------------------------------------------------------

    /// The connection of the commands' thread. @throws Error.
    CAConnect& Connection()
    {
        if (!m_conn || !m_conn->IsOpen()) {
            m_conn = m_open();
        }
        return *m_conn;
    }

    /// Whether who has signed in may still be here: not locked, still a super user, with the same password.
    bool IsStillGood(CAConnect& conn, const Session& session)
    {
        const std::optional<Account> account = FindAccount(conn, session.account.id);
        if (account && IsSame(account->mark, session.account.mark)) {
            return true;
        }
        m_sessions.End(session.key);
        return false;
    }

    /// Makes an answer on the commands' thread. @param make  Response make(CAConnect&, const Visit&).
    template <class Make>
    void InCommands(Visit visit, Make make)
    {
        m_commands.Post([this, visit = std::move(visit), make = std::move(make)] {
            visit.responder.Send(Guarded([&] {
                CAConnect& conn = Connection();
                return IsStillGood(conn, *visit.session) ? make(conn, visit) : ResponseOf(NotSignedIn());
            }));
        });
    }

    /// Makes an answer on the lists' thread. @param make  Response make(const Visit&).
    template <class Make>
    void InLists(Visit visit, Make make)
    {
        m_lists.Post([this, visit = std::move(visit), make = std::move(make)] {
            visit.responder.Send(Guarded([&] {
                return IsStillGood(m_reader.Connection(), *visit.session) ? make(visit) : ResponseOf(NotSignedIn());
            }));
        });
    }

    Response RunFor(CAConnect& conn, const Command& command, const Visit& visit)
    {
        const Session& session = *visit.session;
        const bool hasConfirmed = m_sessions.IsConfirmed(session, m_options.clock());
        const SessionResults results{m_results, session.id};
        const auto request = std::make_shared<CommandRequest>(command, visit.request.body, results);
        const CommandRequest& asked = *request;
        const Level least = LeastLevel(command, *asked.arguments);
        if (const std::optional<Problem> problem = RefusalByLevel(visit, least, PathText(command))) {
            return ResponseOf(*problem);
        }
        if (command.risk == Risk::stepUp && !hasConfirmed) {
            return ResponseOf(PasswordRequired());
        }
        const Caller caller{session.account.login, hasConfirmed, session.account.level};
        if (asked.IsJob()) {
            return BeginJob(request, visit, caller);
        }
        Written written;
        Response response = RunCommand(conn, asked, caller, written);
        NoteWritten(written);
        if (written.isAnything) {
            Log("change", session.account.login, visit.request.address, asked.arguments->Text());
        }
        return response;
    }

    /// Has lists and trees show what was written, and browsers told.
    void NoteWritten(const Written& written)
    {
        if (written.isMore) {
            m_reader.NoteChange();
        } else if (!written.users.empty()) {
            // Before anything that is asked once this is answered.
            m_lists.Post([this, users = written.users] { m_reader.NoteUsers(users); });
        }
        if (written.isAnything) {
            if (!m_events.IsKnown(written.before)) {
                m_reader.NoteChange();
            }
            m_events.NoteOwn(written.entry);
        }
    }

    void Log(std::string_view event, const std::string& login, const std::string& address, const std::string& what)
    {
        if (!m_options.log) {
            return;
        }
        std::ostringstream out;
        JsonWriter json(out, JsonWriter::Layout::line);
        json.BeginObject();
        json.WriteMember("event", TextValue(std::string(event)));
        json.WriteMember("login", TextValue(login));
        json.WriteMember("address", TextValue(address));
        if (!what.empty()) {
            json.WriteMember("what", TextValue(what));
        }
        json.End();
        const std::lock_guard lock(m_mutex);
        m_options.log(std::move(out).str());
    }

    ServerOptions m_options;
    Languages m_languages; ///< outlives the workers, who speak them
    OpenDirectory m_open;
    Sessions m_sessions;
    std::string m_shownToken;
    std::string m_setupToken; ///< of the commands' thread, like the three below
    Clock::time_point m_setupEnds;
    std::map<std::string, std::string> m_newSecrets; ///< of one-time codes, by the session that asked for one
    std::shared_ptr<CAConnect> m_conn;
    std::map<std::string, Allowance> m_allowances; ///< of the thread of HTTP, by login name
    std::mutex m_mutex;                            ///< of the throttle and the log
    Throttle m_throttle;
    Results m_results;
    ImportTexts m_texts;
    Jobs m_jobs;
    std::deque<Worker::Task> m_waitingJobs; ///< of the commands' thread, like the next one
    bool m_isInJob = false;
    Events m_events;
    bool m_isLooking = false; ///< for changes of others; of the lists' thread
    Reader m_reader;
    std::optional<Origins> m_origins;
    std::latch m_isReady{1};
    std::optional<HttpServer> m_http;
    Worker m_commands;
    Worker m_lists;
    Worker m_timer;
};

Server::Server(const OpenDirectory& open, ServerOptions options)
    : m_site(std::make_unique<Site>(open, std::move(options)))
{
}

Server::~Server() = default;

std::uint16_t Server::Port() const { return m_site->Port(); }

std::string Server::Url() const { return m_site->Url(); }

const std::string& Server::SetupToken() const { return m_site->SetupToken(); }

} // namespace web
