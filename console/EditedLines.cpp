#include "console/LineEditor.h"
#include "console/LineHistory.h"
#include "console/ShellWords.h"
#include "management/Errors.h"
#include "management/Text.h"
#include "platform/Api.h"

#include <histedit.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <string_view>
#include <utility>

namespace console {

using management::ContinuesCharacter;
using management::Error;
using management::ErrorCode;

namespace {

constexpr std::size_t kMostListed = 100;

/// The locale of this thread while it lives.
class LocaleScope {
public:
    explicit LocaleScope(locale_t locale) : m_before(::uselocale(locale)) {}
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;
    ~LocaleScope() { ::uselocale(m_before); }

private:
    locale_t m_before;
};

int CountCharacters(std::string_view text)
{
    return static_cast<int>(std::ranges::count_if(text, [](char byte) { return !ContinuesCharacter(byte); }));
}

/// What all of them begin with, in whole characters.
std::string CommonBeginning(const std::vector<std::string>& words)
{
    std::string_view common = words.front();
    for (const std::string& word : words) {
        auto length = static_cast<std::size_t>(std::ranges::mismatch(common, word).in1 - common.begin());
        while (length < common.size() && ContinuesCharacter(common[length])) {
            --length;
        }
        common = common.substr(0, length);
    }
    return std::string(common);
}

/// As it is written in a line outside of quotes.
std::string Escaped(std::string_view word)
{
    std::string escaped;
    for (const char byte : word) {
        const bool isSpecial =
            std::string_view(" \t\r'\"\\").find(byte) != std::string_view::npos || (byte == '#' && escaped.empty());
        escaped += isSpecial ? std::string{'\\', byte} : std::string{byte};
    }
    return escaped;
}

/// LineEditor by the library that edits lines.
class EditedLines final : public LineEditor {
public:
    EditedLines(std::string prompt, Complete complete, SayMore sayMore, std::ostream& err);
    EditedLines(const EditedLines&) = delete;
    EditedLines& operator=(const EditedLines&) = delete;
    ~EditedLines() override;

    std::optional<std::string> Read() override;
    void Remember(const std::string& line) override;

private:
    static EditedLines& Of(EditLine* edit);
    static char* PromptOf(EditLine* edit);
    static unsigned char Cancel(EditLine* edit, int key);
    static unsigned char TakeTab(EditLine* edit, int key);
    unsigned char CompleteWord();
    void Replace(const UnfinishedLine& line, const std::string& word, bool isWhole);
    void List(const std::vector<std::string>& words);

    std::string m_prompt;
    Complete m_complete;
    SayMore m_sayMore;
    std::ostream& m_err;
    locale_t m_locale; ///< in which characters are those of UTF-8
    std::unique_ptr<EditLine, decltype(&el_end)> m_edit;
    std::unique_ptr<History, decltype(&history_end)> m_history;
    bool m_isCancelled = false;
};

EditedLines::EditedLines(std::string prompt, Complete complete, SayMore sayMore, std::ostream& err)
    : m_prompt(std::move(prompt)),
      m_complete(std::move(complete)),
      m_sayMore(std::move(sayMore)),
      m_err(err),
      m_locale(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)),
      m_edit(nullptr, &el_end),
      m_history(history_init(), &history_end)
{
    const LocaleScope scope(m_locale);
    m_edit.reset(el_init("qvadmin", stdin, stderr, stderr));
    if (!m_edit || !m_history) {
        throw Error(ErrorCode::failed, "lines cannot be read from this terminal; `qvadmin batch -` takes them too");
    }
    EditLine* edit = m_edit.get();
    HistEvent event;
    history(m_history.get(), &event, H_SETSIZE, static_cast<int>(kMostHistory));
    history(m_history.get(), &event, H_SETUNIQUE, 1);
    el_set(edit, EL_CLIENTDATA, this);
    el_set(edit, EL_PROMPT, &PromptOf);
    el_set(edit, EL_HIST, &history, m_history.get());
    el_set(edit, EL_EDITOR, "emacs");
    // While a line is edited, Ctrl-C is read like other keys: the library would pass its signal on to the whole
    // process group.
    el_set(edit, EL_SETTY, "-d", "-isig", nullptr);
    el_wset(edit, EL_ADDFN, L"cancel-line", L"Give this line up", &Cancel);
    el_wset(edit, EL_ADDFN, L"complete-word", L"Complete this word", &TakeTab);
    el_set(edit, EL_BIND, "^C", "cancel-line", nullptr);
    el_set(edit, EL_BIND, "^I", "complete-word", nullptr);
    el_set(edit, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_source(edit, nullptr);
}

EditedLines::~EditedLines()
{
    {
        const LocaleScope scope(m_locale);
        m_edit.reset();
    }
    if (m_locale != nullptr) {
        ::freelocale(m_locale);
    }
}

std::optional<std::string> EditedLines::Read()
{
    const LocaleScope scope(m_locale);
    m_isCancelled = false;
    // Before the prompt is there, so that keys which answer it at once are not taken as those of a terminal for lines.
    el_set(m_edit.get(), EL_PREP_TERM, 1);
    int count = 0;
    const char* text = el_gets(m_edit.get(), &count);
    if (m_isCancelled || (count < 0 && errno == EINTR)) {
        m_err << "^C\n";
        return "";
    }
    if (text == nullptr || count <= 0) {
        return std::nullopt;
    }
    std::string line(text, static_cast<std::size_t>(count));
    if (line.ends_with('\n')) {
        line.pop_back();
    }
    return line;
}

void EditedLines::Remember(const std::string& line)
{
    HistEvent event;
    history(m_history.get(), &event, H_ENTER, line.c_str());
}

EditedLines& EditedLines::Of(EditLine* edit)
{
    void* self = nullptr;
    el_get(edit, EL_CLIENTDATA, &self);
    return *static_cast<EditedLines*>(self);
}

char* EditedLines::PromptOf(EditLine* edit) { return Of(edit).m_prompt.data(); }

unsigned char EditedLines::Cancel(EditLine* edit, int /*key*/)
{
    Of(edit).m_isCancelled = true;
    const LineInfo* line = el_line(edit);
    el_cursor(edit, CountCharacters({line->cursor, line->lastchar}));
    el_set(edit, EL_REFRESH);
    el_deletestr(edit, CountCharacters({line->buffer, line->lastchar}));
    return CC_NEWLINE;
}

unsigned char EditedLines::TakeTab(EditLine* edit, int /*key*/)
{
    try {
        return Of(edit).CompleteWord();
    } catch (const std::exception&) {
        return CC_ERROR;
    }
}

unsigned char EditedLines::CompleteWord()
{
    const LineInfo* info = el_line(m_edit.get());
    const std::string text(info->buffer, info->cursor);
    const UnfinishedLine line = SplitUnfinishedLine(text);
    const std::vector<std::string> words = m_complete(line.words, line.last);
    if (words.empty()) {
        return CC_REFRESH_BEEP;
    }
    const std::string common = CommonBeginning(words);
    if (words.size() == 1 || common.size() > line.last.size()) {
        Replace(line, common, words.size() == 1);
        return CC_REFRESH;
    }
    List(words);
    return CC_REDISPLAY;
}

void EditedLines::Replace(const UnfinishedLine& line, const std::string& word, bool isWhole)
{
    el_deletestr(m_edit.get(), CountCharacters(line.lastAsWritten));
    el_insertstr(m_edit.get(), (Escaped(word) + (isWhole ? " " : "")).c_str());
}

void EditedLines::List(const std::vector<std::string>& words)
{
    m_err << '\n';
    const std::size_t shown = std::min(words.size(), kMostListed);
    for (std::size_t i = 0; i < shown; ++i) {
        m_err << words[i] << (i + 1 < shown ? "  " : "\n");
    }
    if (shown < words.size()) {
        m_err << m_sayMore(words.size() - shown) << '\n';
    }
}

} // namespace

} // namespace console

extern "C" QV_API console::LineEditor* QvOpenLineEditor(const std::string* prompt,
                                                        const console::LineEditor::Complete* complete,
                                                        const console::LineEditor::SayMore* sayMore, std::ostream* err);
extern "C" console::LineEditor* QvOpenLineEditor(const std::string* prompt,
                                                 const console::LineEditor::Complete* complete,
                                                 const console::LineEditor::SayMore* sayMore, std::ostream* err)
{
    return new console::EditedLines(*prompt, *complete, *sayMore, *err);
}
