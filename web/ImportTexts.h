#pragma once

#include "management/JsonWriter.h"
#include "web/Import.h"
#include "web/JsonReader.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace web {

/// The texts that are being sent to be imported. Any thread may use it.
class ImportTexts {
public:
    /// Adds a part to the text of a session, or begins it anew. @return its length. @throws management::Error (invalid)
    /// for more than 32 MiB.
    std::size_t AddText(const std::string& session, const std::string& part, bool isFirst);
    /// Writes what a text has, read with a delimiter, as members of an object: its columns, some rows, how many there
    /// are, and the columns that there may be. @throws management::Error (invalid) without a text, or a header.
    void WriteLook(management::JsonWriter& json, const std::string& session, char delimiter) const;
    /// Makes an import of a session's text. @param body  the request's: see docs/web.md. @throws management::Error
    /// (invalid).
    [[nodiscard]] std::shared_ptr<Import> ImportOf(const std::string& session, const std::string& login,
                                                   const JsonValue& body) const;

private:
    [[nodiscard]] std::string TextOf(const std::string& session) const;

    mutable std::mutex m_mutex;                               ///< of the texts
    std::vector<std::pair<std::string, std::string>> m_texts; ///< by session, the youngest last
};

/// The delimiter that a request names: one character. @throws management::Error (invalid).
char DelimiterIn(const JsonValue& body);

} // namespace web
