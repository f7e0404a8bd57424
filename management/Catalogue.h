#pragma once

#include "management/Sentence.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace management {

/// A language as a compiled catalogue (.mo) has it. Unlike the C library, which knows one language in a process and
/// only those of installed locales, several of these can be used at once. Any thread may use it.
class Catalogue final : public Language {
public:
    /// @throws Error (failed) for a file that cannot be read or is no catalogue in the order of bytes of this machine.
    explicit Catalogue(const std::filesystem::path& file);

    [[nodiscard]] std::string Find(const std::string& english) const override;
    [[nodiscard]] std::string FindPlural(const std::string& one, const std::string& others,
                                         std::uint64_t count) const override;

private:
    std::map<std::string, std::vector<std::string>, std::less<>> m_texts; ///< by the English, of one: all forms
    std::string m_pluralRule; ///< an expression of C, by which n gives the number of a form
};

/// What an expression of C with whole numbers, operators and the name n comes to: the rule by which a catalogue chooses
/// a form. 0 for what is no such expression.
std::uint64_t FindPluralForm(std::string_view rule, std::uint64_t n);

} // namespace management
