#pragma once

#include "management/JsonWriter.h"
#include "management/import/Import.h"
#include "management/import/Synchronisation.h"
#include "web/Http.h"
#include "web/JobControl.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace web {

/// One import of people: what it is to do, and what became of the rows. Run works on the thread that uses the module's
/// operations; any thread may call everything else.
class Import {
public:
    struct Order {
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

    explicit Import(Order order) : m_order(std::move(order)) {}

    /// The work of its job, to be called once. What stands in the way of the import is told by Write.
    Response Run(CAConnect& conn, JobControl& control);

    /// Writes what its job does not, as members of an object. @param withRows  also the rows that are shown.
    void Write(management::JsonWriter& json, bool withRows) const;
    /// What became of each row so far, as comma-separated values. @param onlyFailed  the rows that have failed, as a
    /// file that can be imported again; empty when none has.
    [[nodiscard]] std::string Report(bool onlyFailed) const;
    [[nodiscard]] std::size_t FailedCount() const;

private:
    class Front;
    using Rows = std::vector<std::vector<management::Value>>;

    /// Imports the text and deals with leavers. @throws management::Error.
    void Carry(management::Call& call, Front& front, management::ImportReport& report,
               std::optional<management::Synchronisation>& synchronisation);
    /// @throws management::Error (conflict) for leavers to whom nobody has agreed.
    void RequireAgreed(const std::string& digest) const;
    void WriteLeavers(management::JsonWriter& json) const;
    void WriteRows(management::JsonWriter& json, std::string_view name, const Rows& rows) const;

    Order m_order;
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
    management::Sentence m_error;
    int m_entry = 0;
};

} // namespace web
