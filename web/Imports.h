#pragma once

#include "management/JsonWriter.h"
#include "management/import/Import.h"
#include "management/import/Synchronisation.h"
#include "web/JobList.h"
#include "web/JsonReader.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace web {

/// One import of people: what it is to do, how far it is, and what became of the rows. Run works on the thread that
/// uses the module's operations; any thread may call everything else.
class ImportJob {
public:
    struct Order {
        int id = 0;
        std::string login; ///< of who asks for it
        std::string text;  ///< comma-separated values
        long rows = 0;     ///< of the text, without its header
        char delimiter = ',';
        bool dryRun = false;
        std::string reason;
        management::ImportOptions options = {};
        std::optional<management::SynchronisationOptions> synchronisation = {};
        std::string agreed = {}; ///< the digest of the leavers that somebody has seen and agreed to
    };

    /// What else is to be done between two transactions, and whether the server ends.
    struct Surroundings {
        std::function<void()> between;
        std::function<bool()> isEnding;
    };

    explicit ImportJob(Order order) : m_order(std::move(order)) {}

    /// To be called once. Throws nothing: what went wrong is told by Write.
    void Run(CAConnect& conn, const Surroundings& surroundings) noexcept;
    /// Ends it behind the row that is in hand.
    void Stop() noexcept { m_isStopped = true; }
    /// Says that it could not begin.
    void Fail(const std::string& why) { Finish(why); }

    [[nodiscard]] bool IsOver() const;
    [[nodiscard]] bool IsDryRun() const { return m_order.dryRun; }
    [[nodiscard]] int Id() const { return m_order.id; }
    [[nodiscard]] const std::string& Login() const { return m_order.login; }
    /// Writes how it stands, as the members of an object. @param withRows  also the rows that are shown.
    void Write(management::JsonWriter& json, bool withRows) const;
    /// What became of each row so far, as comma-separated values.
    [[nodiscard]] std::string Report() const;
    /// The rows that have failed so far, as a file that can be imported again; empty when none has.
    [[nodiscard]] std::string Failed() const;

private:
    class Front;
    using Rows = std::vector<std::vector<management::Value>>;

    /// Imports the text and deals with leavers. @throws management::Error.
    void Import(management::Call& call, Front& front, management::ImportReport& report,
                std::optional<management::Synchronisation>& synchronisation);
    /// @throws management::Error (conflict) for leavers to whom nobody has agreed.
    void RequireAgreed(const std::string& digest) const;
    void WriteLeavers(management::JsonWriter& json) const;
    void WriteRows(management::JsonWriter& json, std::string_view name, const Rows& rows) const;
    void Finish(const std::string& error);

    Order m_order;
    std::atomic<bool> m_isStopped = false;
    mutable std::mutex m_mutex; ///< of all below
    management::ImportReport m_report;
    std::string m_reportText;
    std::string m_failedText;
    std::vector<std::string> m_columns; ///< of the rows
    Rows m_rows;                        ///< the first ones
    Rows m_failed;                      ///< the first ones that failed
    Rows m_leaverRows;                  ///< the first ones of people who have left
    std::optional<management::SynchronisationReport> m_leavers;
    std::string m_leaversDigest;
    std::string m_error;
    int m_entry = 0;
    bool m_isOver = false;
};

/// The texts that are being sent, and the imports of this server, of which the last ones are kept. Any thread may use
/// it.
class Imports {
public:
    /// Adds a part to the text of a session, or begins it anew. @return its length. @throws management::Error (invalid)
    /// for more than 32 MiB.
    std::size_t AddText(const std::string& session, const std::string& part, bool isFirst);
    /// Writes what a text has, read with a delimiter, as members of an object: its columns, some rows, how many there
    /// are, and the columns that there may be. @throws management::Error (invalid) without a text, or a header.
    void WriteLook(management::JsonWriter& json, const std::string& session, char delimiter) const;
    /// Makes an import of a session's text. @param body  the request's: see docs/web.md. @throws management::Error
    /// (invalid), or (conflict) while another one runs.
    std::shared_ptr<ImportJob> Begin(const std::string& session, const std::string& login, const JsonValue& body);
    [[nodiscard]] const JobList<ImportJob>& Jobs() const { return m_jobs; }

private:
    [[nodiscard]] std::string TextOf(const std::string& session) const;

    mutable std::mutex m_mutex;                               ///< of the texts
    std::vector<std::pair<std::string, std::string>> m_texts; ///< by session, the youngest last
    JobList<ImportJob> m_jobs{1, "another import is running; wait for it, or stop it"};
};

/// The delimiter that a request names: one character. @throws management::Error (invalid).
char DelimiterIn(const JsonValue& body);

} // namespace web
