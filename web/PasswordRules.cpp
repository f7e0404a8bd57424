#include "web/PasswordRules.h"

#include "management/Names.h"
#include "management/Text.h"

#include <pwquality.h>

#include <algorithm>
#include <cctype>
#include <memory>

namespace web {

using namespace management;

namespace {

constexpr std::size_t kShortestWord = 4;
constexpr std::string_view kNoDictionary = "error loading dictionary"; // as cracklib says it

std::size_t CharactersOf(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char ch) { return !ContinuesCharacter(ch); }));
}

/// Whether the dictionary knows a word, or what it makes of one: turned round, with a digit, in steps of the alphabet.
bool IsInDictionary(const std::string& word)
{
    const std::unique_ptr<pwquality_settings_t, void (*)(pwquality_settings_t*)> settings(pwquality_default_settings(),
                                                                                          &pwquality_free_settings);
    if (!settings) {
        throw std::bad_alloc();
    }
    pwquality_set_int_value(settings.get(), PWQ_SETTING_MIN_LENGTH, 1);
    void* detail = nullptr;
    const int found = pwquality_check(settings.get(), word.c_str(), nullptr, nullptr, &detail);
    if (found == PWQ_ERROR_MEM_ALLOC) {
        throw std::bad_alloc();
    }
    const auto* const reason = static_cast<const char*>(detail);
    if (found == PWQ_ERROR_CRACKLIB_CHECK && reason != nullptr && std::string_view(reason) == kNoDictionary) {
        throw Error(ErrorCode::failed, "the dictionary of passwords cannot be read; cracklib-runtime has one");
    }
    return found == PWQ_ERROR_CRACKLIB_CHECK || found == PWQ_ERROR_PALINDROME;
}

/// A text without the digits and signs around it.
std::string_view StemOf(std::string_view password)
{
    const auto isAdded = [](char ch) {
        const auto byte = static_cast<unsigned char>(ch);
        return byte < 0x80 && std::isalpha(byte) == 0;
    };
    while (!password.empty() && isAdded(password.front())) {
        password.remove_prefix(1);
    }
    while (!password.empty() && isAdded(password.back())) {
        password.remove_suffix(1);
    }
    return password;
}

/// Whether a text is a shorter one several times.
bool IsRepetition(std::string_view text)
{
    for (std::size_t length = 1; length <= text.size() / 2; ++length) {
        if (text.size() % length == 0 && text.substr(length) == text.substr(0, text.size() - length)) {
            return true;
        }
    }
    return false;
}

bool IsEasy(std::string_view password)
{
    const std::string_view stem = StemOf(password);
    return IsRepetition(password) || IsInDictionary(std::string(password)) ||
           (stem.size() >= kShortestWord && (IsRepetition(stem) || IsInDictionary(std::string(stem))));
}

/// A text without blanks, and without regard to case.
std::string Plain(std::string_view text)
{
    std::string plain = NameKey(std::string(text));
    std::erase(plain, ' ');
    return plain;
}

bool IsNameOf(std::string_view password, const PasswordOwner& owner)
{
    const std::string plain = Plain(password);
    return std::ranges::any_of(std::initializer_list<const std::string*>{&owner.login, &owner.name, &owner.company},
                               [&plain](const std::string* name) { return !name->empty() && plain == Plain(*name); });
}

} // namespace

std::optional<Problem> FindWeakness(std::string_view password, std::span<const PasswordOwner> owners)
{
    constexpr int unprocessable = 422;
    const bool isForSuper = std::ranges::any_of(owners, &PasswordOwner::isSuper);
    const std::size_t least = isForSuper ? kShortestPasswordOfSuperUser : kShortestPassword;
    if (CharactersOf(password) < least) {
        return isForSuper ? Problem{unprocessable, "password_short_super",
                                    FillPattern("the password of a super user needs at least {} characters", least)}
                          : Problem{unprocessable, "password_short",
                                    FillPattern("the password needs at least {} characters", least)};
    }
    for (const PasswordOwner& owner : owners) {
        if (IsNameOf(password, owner)) {
            return Problem{unprocessable, "password_is_name",
                           FillPattern("the password is the login name, the name or the company of {}; take another",
                                       Visible(owner.login))};
        }
    }
    if (IsEasy(password)) {
        return Problem{unprocessable, "password_easy", Translatable("the password is easy to guess; take another")};
    }
    return std::nullopt;
}

} // namespace web
