#pragma once

#include <string>

namespace bench {

/// Folders that hold folders, and notices with replies: a hundred of each with a thousand below.
struct Shelves {
    static constexpr int kParents = 100;
    static constexpr int kChildren = 1'000;
    /// The id of a notice is this and its number.
    static constexpr const char* kNotice = "notice-";
};

/// Makes a file with folders and notices.
void MakeShelves(const std::string& path);

/// Messages with what hangs on them: an attachment and three receipts each. About half are older than the date.
struct Mail {
    static constexpr int kReceipts = 3;
    static constexpr const char* kHalfOfThem = "2012-07-01 12:00:00";
};

/// Makes a file with so many messages.
void MakeMail(const std::string& path, int messages);

} // namespace bench
