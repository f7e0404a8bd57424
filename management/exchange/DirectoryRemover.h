#pragma once

#include "management/Call.h"
#include "management/exchange/ItemNames.h"
#include "management/exchange/LineSource.h"
#include "management/exchange/MatchedLine.h"

#include <span>
#include <vector>

namespace management {

/// Deletes what lines of a directory are about, and what refers to it. To be used within one Change.
class DirectoryRemover {
public:
    struct Options {
        bool allowPrivileges = false; ///< super and system users may be deleted
        /// Whether the rows of people keep a department whose group is deleted, but for its id: their lines say it.
        bool keepsDepartments = false;
    };

    /// Reads the names of items. @throws DatabaseError.
    DirectoryRemover(Call& call, Options options);

    /// @param lines  of one noun, as the directory has them; those of a tree all at once.
    /// @throws Error (isProtected) for Admin, and for privileged users unless that is allowed; (conflict) for what
    /// cannot be told from something else. @throws DatabaseError.
    void Remove(std::vector<ExportedLine> lines);

private:
    void RemoveBlock(std::span<const ExportedLine> lines);
    void RemoveRows(const Noun& noun, const std::vector<MatchedLine>& lines);
    void RemoveUser(const MatchedLine& line);
    void RemoveGroups(const std::vector<int>& ids);
    void RemoveItems(const Noun& noun, const std::vector<int>& ids);

    Call& m_call;
    CAConnect& m_conn;
    Options m_options;
    ItemNames m_names; ///< as they were in the beginning
};

} // namespace management
