#include "console/Translation.h"

#include "management/ProgramModule.h"

#include <langinfo.h>
#include <libintl.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

namespace console {

namespace {

constexpr const char* kDomain = "qvadmin";

class FreeLocale {
public:
    void operator()(locale_t locale) const { ::freelocale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale>;

/// Looks texts up in the catalogue of a locale. It makes that the locale of the thread for the look-up alone: what is
/// said by libraries, such as the system's reasons for failures, is a part of sentences for programs too.
class CatalogueLanguage final : public Language {
public:
    explicit CatalogueLanguage(Locale locale) : m_locale(std::move(locale)) {}

    [[nodiscard]] std::string Find(const std::string& english) const override
    {
        // The catalogue has its own description under the empty text.
        return english.empty() ? english : Ask([&] { return ::dgettext(kDomain, english.c_str()); });
    }
    [[nodiscard]] std::string FindPlural(const std::string& one, const std::string& others,
                                         std::uint64_t count) const override
    {
        return Ask([&] { return ::dngettext(kDomain, one.c_str(), others.c_str(), count); });
    }

private:
    template <class Question>
    [[nodiscard]] std::string Ask(Question question) const
    {
        const locale_t before = ::uselocale(m_locale.get());
        const char* text = question();
        ::uselocale(before);
        return text;
    }

    Locale m_locale;
};

std::unique_ptr<const Language> language; ///< null: English

/// As setlocale reads it.
std::string_view LocaleName()
{
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return "C";
}

} // namespace

std::filesystem::path CatalogueFolder()
{
    std::error_code error;
    return management::FileOfProgram(QV_LOCALE_DIRECTORY, error);
}

void ChooseLanguage()
{
    language.reset();
    if (const std::string_view name = LocaleName(); name == "C" || name == "POSIX") {
        return;
    }
    Locale locale(::newlocale(LC_CTYPE_MASK | LC_MESSAGES_MASK, "", nullptr));
    if (locale == nullptr || std::string_view(::nl_langinfo_l(CODESET, locale.get())) != "UTF-8") {
        return;
    }
    const std::filesystem::path catalogues = CatalogueFolder();
    if (catalogues.empty()) {
        return;
    }
    ::bindtextdomain(kDomain, catalogues.c_str());
    ::bind_textdomain_codeset(kDomain, "UTF-8");
    language = std::make_unique<CatalogueLanguage>(std::move(locale));
}

std::string Translated(std::string_view english)
{
    const std::string text(english);
    return language == nullptr ? text : language->Find(text);
}

std::string Translated(const char* english) { return Translated(std::string_view(english)); }

std::string Translated(const Sentence& sentence)
{
    return language == nullptr ? sentence.English() : Translate(sentence, *language);
}

std::string TranslatedColumn(std::string_view name)
{
    return language == nullptr ? std::string(name) : language->FindName(name);
}

} // namespace console
