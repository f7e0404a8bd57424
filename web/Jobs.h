#pragma once

#include "management/JsonWriter.h"
#include "web/Http.h"
#include "web/JobControl.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class CAConnect;

namespace web {

class Import;

/// A long task, its progress, and what became of it. Run works on the thread that uses the module's
/// operations; any thread may call everything else.
class Job final : public JobControl {
public:
    /// Does the work. @return what a request that does it at once would be answered.
    using Work = std::function<Response(CAConnect& conn, JobControl& control)>;

    struct Order {
        std::string what;  ///< the words of the command
        std::string login; ///< of who asks for it, and alone gets the answer
        Work work;
        std::shared_ptr<const Import> import = {}; ///< what it does, where that is an import of people
    };

    /// What else is to be done between two transactions and with what was written, and whether the server ends.
    struct Surroundings {
        std::function<void()> between;
        std::function<void(const Written&)> written;
        std::function<bool()> isEnding;
    };

    Job(int id, Order order) : m_id(id), m_order(std::move(order)), m_language(management::Speaking::Present()) {}

    /// To be called once. Throws nothing: what went wrong is in the answer.
    void Run(CAConnect& conn, const Surroundings& surroundings) noexcept;
    /// Ends it after the current transaction, if it has several.
    void Stop() noexcept { m_isStopped = true; }
    /// Ends it with an answer before it begins.
    void Fail(Response answer) { Finish(std::move(answer)); }

    [[nodiscard]] int Id() const { return m_id; }
    /// The language that it was made in, and that its answer is for.
    [[nodiscard]] const management::Language* ItsLanguage() const { return m_language; }
    [[nodiscard]] const std::string& Login() const { return m_order.login; }
    [[nodiscard]] const std::string& What() const { return m_order.what; }
    [[nodiscard]] const std::shared_ptr<const Import>& ItsImport() const { return m_order.import; }
    [[nodiscard]] bool IsOver() const;
    /// Writes its state, as the members of an object.
    void Write(management::JsonWriter& json) const;
    /// Its answer, which is there once: it may hold passwords. Nothing before it is over, afterwards, and for a file.
    std::optional<Response> TakeAnswer();
    /// Its answer where that is a file, which stays; nothing for any other.
    [[nodiscard]] std::optional<Response> File() const;
    /// What became of each thing so far, as comma-separated values. @param onlyFailed  of those that failed; of an
    /// import a file that can be imported again.
    [[nodiscard]] std::string Report(bool onlyFailed) const;

    void ShowProgress(long done, std::optional<long> total) override;
    void TakeOutcome(const management::Outcome& outcome, bool hasFailed) override;
    void TakeWritten(const Written& written) override;
    [[nodiscard]] bool IsStopRequested() const noexcept override;

private:
    void Finish(Response answer);

    int m_id;
    Order m_order;
    const management::Language* m_language;
    const Surroundings* m_surroundings = nullptr; ///< of the thread that runs it
    std::atomic<bool> m_isStopped = false;
    mutable std::mutex m_mutex; ///< of all below
    long m_done = 0;
    std::optional<long> m_total;
    bool m_canStop = false;
    bool m_isBegun = false;
    bool m_isOver = false;
    std::size_t m_failedCount = 0;
    std::string m_report;
    std::string m_failed;
    int m_status = 0;
    bool m_isFile = false;
    std::optional<Response> m_answer;
};

/// The jobs of this server, of which the last ones are kept, each with a number that no other of them has had. Any
/// thread may use it.
class Jobs {
public:
    /// Adds a job. Where as many are kept as may be, the oldest that is over goes. @throws management::Error (conflict)
    /// while too many wait, and for an import while another one does.
    std::shared_ptr<Job> Add(Job::Order order);
    /// Null where there is none, or no longer.
    [[nodiscard]] std::shared_ptr<Job> Find(int id) const;
    /// The youngest first.
    [[nodiscard]] std::vector<std::shared_ptr<Job>> All() const;

    static constexpr std::size_t kMost = 8; ///< so many are kept

private:
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<Job>> m_jobs; ///< the youngest last
    int m_last = 0;
};

} // namespace web
