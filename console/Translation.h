#pragma once

#include "management/Sentence.h"

#include <filesystem>
#include <string>
#include <string_view>

// What people read comes in the language of their locale; what programs read, such as JSON, the log and the record, is
// English always, and so are words that are typed: commands, options, fields.

namespace console {

using namespace management;

/// Chooses the language by LC_ALL, LC_MESSAGES or LANG, and LANGUAGE. English where there is no catalogue, no such
/// locale, or a character set other than UTF-8, in which everything is written.
void ChooseLanguage();

/// Where the catalogues are: LANGUAGE/LC_MESSAGES/qvadmin.mo. Empty when the program's own file cannot be found.
std::filesystem::path CatalogueFolder();

/// A text or sentence in the chosen language; in English where that does not have it. For one thread.
std::string Translated(const char* english);
std::string Translated(std::string_view english);
std::string Translated(const Sentence& sentence);
/// What people read over a column.
std::string TranslatedColumn(std::string_view name);

} // namespace console
