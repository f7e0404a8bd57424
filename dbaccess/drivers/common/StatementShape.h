#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dbaccess {

/// How an engine writes placeholders and texts.
struct ShapeSyntax {
    /// $1, $2, ... and for a number $1::int4 or $1::int8, the type that its literal has; otherwise a plain ? for each.
    bool typedPlaceholders = false;
    /// A backslash in a text literal begins an escape.
    bool backslashEscapes = false;
};

/// A literal that was cut out of a statement.
struct CutLiteral {
    std::size_t begin;  ///< its place in the statement: the opening quote, or the sign or first digit
    std::size_t length; ///< with its quotes, or its sign
    bool isText;
    bool hasEscapes;     ///< a text with a doubled quote or an escape in it
    bool isCompared;     ///< in a condition, where -1, 0 and 1 are not cut
    std::int64_t number; ///< of a number
};

/// A statement without the literals that change from call to call, so that the statements of an operation are one to
/// the engine. Only places are cut at where a placeholder means the same as the literal; docs/architecture.md lists
/// them. An object's memory is used again by the next text; it belongs to one thread at a time.
class StatementShape {
public:
    explicit StatementShape(ShapeSyntax syntax) : m_syntax(syntax) {}

    /// Cuts a statement in UTF-8.
    /// @return false for a text that must be run as it is; Text and Literals are then without meaning.
    bool Cut(std::string_view statement);
    /// The statement with a placeholder for each literal.
    [[nodiscard]] const std::string& Text() const noexcept { return m_text; }
    /// What was cut out, in the order of the placeholders; perhaps nothing.
    [[nodiscard]] const std::vector<CutLiteral>& Literals() const noexcept { return m_literals; }
    /// The value of a text literal, made in its place, so that the literal is lost.
    /// @param statement  a copy of the statement, which the value lies in.
    [[nodiscard]] std::string_view UnescapeInPlace(char* statement, const CutLiteral& literal) const noexcept;

private:
    bool CutAsBefore(std::string_view statement);

    ShapeSyntax m_syntax;
    std::string m_text;
    std::vector<CutLiteral> m_literals;
    /// Of the text's parts between placeholders, begin and end; none when nothing was cut last.
    std::vector<std::pair<std::size_t, std::size_t>> m_parts;
};

} // namespace dbaccess
