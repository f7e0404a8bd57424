#pragma once

#include "management/exchange/LineSource.h"

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace management {

/// What a file says that it has of a directory.
struct ExportScope {
    std::vector<const Noun*> nouns;     ///< none: it does not say
    std::optional<std::string> in = {}; ///< the path of a view or group, where it is the part below
};

/// Reads an exported directory line by line; holds one of them.
class LineReader final : public LineSource {
public:
    /// @param in  read from where it stands; outlives the reader. @param name  of the file, for sentences.
    LineReader(std::istream& in, std::string name) : m_in(in), m_name(std::move(name)) {}

    /// Reads the first line. @throws Error (invalid) for another one than that of an exported directory.
    void RequireHead();
    /// What the first line says.
    [[nodiscard]] const ExportScope& Scope() const { return m_scope; }
    /// For sentences.
    [[nodiscard]] const std::string& Name() const { return m_name; }
    /// Passes over blank lines.
    std::optional<ExportedLine> Next() override;
    [[nodiscard]] bool Failed() const override { return m_failed; }
    std::size_t TakeBytes() override { return std::exchange(m_bytes, 0); }

private:
    std::optional<std::string> ReadText();
    void TakeScope(const JsonObject& head);

    std::istream& m_in;
    std::string m_name;
    ExportScope m_scope;
    long m_number = 0;
    std::size_t m_bytes = 0;
    bool m_failed = false;
};

} // namespace management
