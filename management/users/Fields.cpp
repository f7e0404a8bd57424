#include "management/users/Fields.h"

#include "management/Errors.h"
#include "management/Overloaded.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace management {

namespace {

using Use = Field::Use;

constexpr std::string_view kSex = "sex";

constexpr Field kFields[] = {
    {"login", "Col_LoginName", &CHumanItem::m_strLoginName, Use::shown, ""},
    {"name", "Col_Name", &CHumanItem::m_strName, Use::given, "display name"},
    {"email", "Col_EMail", &CHumanItem::m_strEMail, Use::given, "e-mail address"},
    {"mobile", "Col_Mobile", &CHumanItem::m_strMobile, Use::given, "mobile number"},
    {kSex, "Col_Sex", &CHumanItem::m_nSex, Use::given, "0, 1, 2, unknown, male, female, m or f"},
    {"birthday", "Col_Birthday", &CHumanItem::m_dtBirthday, Use::given, "YYYY-MM-DD; empty for none"},
    {"title", "Col_o_JobTitle", &CHumanItem::m_strJobTitle, Use::given, "job title"},
    {"department", "Col_DeptInfo", &CHumanItem::m_strDeptInfo, Use::given,
     "the group that the user belongs to: /VIEW/GROUP, or its path below a view; empty for none"},
    {"department_id", "Col_DeptID", &CHumanItem::m_nDeptID, Use::shown, ""},
    {"company", "Col_o_CompanyName", &CHumanItem::m_strCompanyName, Use::given, "company"},
    {"office_phone", "Col_o_Phone", &CHumanItem::m_strOfficePhone, Use::given, "office phone"},
    {"office_fax", "Col_o_Fax", &CHumanItem::m_strOfficeFax, Use::given, "office fax"},
    {"office_address", "Col_o_Address", &CHumanItem::m_strOfficeAddress, Use::given, "office address"},
    {"office_postcode", "Col_o_PostCode", &CHumanItem::m_strOfficePostCode, Use::given, "office post code"},
    {"home_province", "Col_h_Province", &CHumanItem::m_strHomeProvince, Use::given, "home province"},
    {"home_city", "Col_h_City", &CHumanItem::m_strHomeCity, Use::given, "home city"},
    {"home_address", "Col_h_Address", &CHumanItem::m_strHomeAddress, Use::given, "home address"},
    {"home_postcode", "Col_h_PostCode", &CHumanItem::m_strHomePostCode, Use::given, "home post code"},
    {"home_phone", "Col_h_Phone", &CHumanItem::m_strHomePhone, Use::given, "home phone"},
    {"home_fax", "Col_h_Fax", &CHumanItem::m_strHomeFax, Use::given, "home fax"},
    {"note", "Col_Note", &CHumanItem::m_strNote, Use::given, "note"},
    {"description", "Col_Description", &CHumanItem::m_strDescription, Use::given, "description"},
    {"ecard", "Col_ECard", &CHumanItem::m_strECard, Use::given, "electronic business card"},
    {"picture", "Col_Picture", &CHumanItem::m_strPicture, Use::given, "picture"},
    {"user_data", "Col_UserData", &CHumanItem::m_strUserData, Use::given, "free text kept with the user"},
    {"creator", "Col_Creator_Name", &CHumanItem::m_strCreatorName, Use::given, "name of who created the user"},
    {"sort_index", "Col_ItemIndex", &CHumanItem::m_nItemIndex, Use::given, "place in sorted lists, 10000 if not given"},
    {"level", "Col_Level", std::monostate(), Use::shown, ""},
    {"domain_id", "Col_DomainID", &CHumanItem::m_nDomainID, Use::given, "domain id"},
    {"super", "Col_IsSuper", &CHumanItem::m_bIsSuper, Use::given, "super user"},
    {"system", "Col_IsSystem", &CHumanItem::m_bIsSystem, Use::given, "system account"},
    {"locked", "Col_Disabled", &CHumanItem::m_bDisabled, Use::given, "locked: cannot log in"},
    {"far_user", "Col_IsFarUser", &CHumanItem::m_bIsFarUser, Use::changed, "user of a far server"},
    {"far_server", "Col_FarServer", &CHumanItem::m_strFarServer, Use::changed, "name of the far server"},
    {"password", "Col_PWord", &CHumanItem::m_strPWord, Use::kept, ""},
    {"password_type", "Col_EnType", &CHumanItem::m_nEnType, Use::kept, ""},
};

constexpr std::array<std::string_view, 3> kSexes = {"unknown", "male", "female"};

bool SameLetters(std::string_view a, std::string_view b) { return platform::UpperUtf8(a) == platform::UpperUtf8(b); }

std::optional<int> AsNumber(std::string_view text)
{
    int number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

// Anything else in a column of numbers counts as 0, as for the engine.
int StoredNumber(const Stored& value)
{
    int number = 0;
    const std::string text = value.value_or("");
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

[[noreturn]] void ThrowInvalid(const Field& field, const std::string& text, std::string_view expected)
{
    throw Error(ErrorCode::invalid, FillPattern("{} {} is not {}", field.name, Quoted(text), Sentence(expected)));
}

std::string ParseSex(const Field& field, const std::string& text)
{
    for (std::size_t i = 0; i < kSexes.size(); ++i) {
        const bool isLetter = i != 0 && SameLetters(text, kSexes[i].substr(0, 1));
        if (text == std::to_string(i) || SameLetters(text, kSexes[i]) || isLetter) {
            return std::to_string(i);
        }
    }
    ThrowInvalid(field, text, "0, 1, 2, unknown, male, female, m or f");
}

std::string ParseNumber(const Field& field, const std::string& text)
{
    if (field.name == kSex) {
        return ParseSex(field, text);
    }
    const std::optional<int> number = AsNumber(text);
    if (!number) {
        ThrowInvalid(field, text, Translatable("a whole number"));
    }
    return std::to_string(*number);
}

std::string ParseFlag(const Field& field, const std::string& text)
{
    for (const std::string_view yes : {"1", "true", "yes"}) {
        if (SameLetters(text, yes)) {
            return "1";
        }
    }
    for (const std::string_view no : {"0", "false", "no"}) {
        if (SameLetters(text, no)) {
            return "0";
        }
    }
    ThrowInvalid(field, text, Translatable("yes or no"));
}

std::optional<COleDateTime> ReadDate(std::string_view text)
{
    if (text.size() < 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    const std::optional<int> year = AsNumber(text.substr(0, 4));
    const std::optional<int> month = AsNumber(text.substr(5, 2));
    const std::optional<int> day = AsNumber(text.substr(8, 2));
    if (!year || !month || !day) {
        return std::nullopt;
    }
    const COleDateTime date(*year, *month, *day, 0, 0, 0);
    return date.GetStatus() == COleDateTime::valid ? std::optional(date) : std::nullopt;
}

Stored ParseDate(const Field& field, const std::string& text)
{
    if (text.empty()) {
        return std::nullopt;
    }
    if (text.size() != 10 || !BeginsWithDate(text)) {
        ThrowInvalid(field, text, Translatable("a date (YYYY-MM-DD)"));
    }
    return text;
}

void SetDate(COleDateTime& date, const Stored& value) { date = ReadDate(value.value_or("")).value_or(date); }

} // namespace

std::span<const Field> Fields() { return kFields; }

bool BeginsWithDate(std::string_view text)
{
    const std::optional<COleDateTime> date = ReadDate(text);
    // From year 1000 on all engines and the C library agree on four digits.
    return date && date->GetYear() >= 1000;
}

const Field* FindField(std::string_view name)
{
    const auto* found = std::ranges::find(kFields, name, &Field::name);
    if (found == std::end(kFields)) {
        found = std::ranges::find_if(kFields, [name](const Field& field) { return SameLetters(field.name, name); });
    }
    return found == std::end(kFields) ? nullptr : found;
}

std::string OptionOf(const Field& field)
{
    std::string option = "--" + std::string(field.name);
    std::ranges::replace(option, '_', '-');
    return option;
}

Stored ParseValue(const Field& field, const std::string& text)
{
    return std::visit(Overloaded{[&](CString CHumanItem::*) -> Stored { return text; },
                                 [&](int CHumanItem::*) -> Stored { return ParseNumber(field, text); },
                                 [&](bool CHumanItem::*) -> Stored { return ParseFlag(field, text); },
                                 [&](COleDateTime CHumanItem::*) { return ParseDate(field, text); },
                                 [&](std::monostate) -> Stored { return text; }},
                      field.member);
}

void SetMember(CHumanItem& item, const Field& field, const Stored& value)
{
    std::visit(
        Overloaded{[&](CString CHumanItem::* member) { item.*member = CString(std::string_view(value.value_or(""))); },
                   [&](int CHumanItem::* member) { item.*member = StoredNumber(value); },
                   [&](bool CHumanItem::* member) { item.*member = StoredNumber(value) != 0; },
                   [&](COleDateTime CHumanItem::* member) { SetDate(item.*member, value); }, [](std::monostate) {}},
        field.member);
}

std::string WrittenBy(const CHumanItem& item, const Field& field)
{
    return std::visit(Overloaded{[&](CString CHumanItem::* member) { return std::string((item.*member).View()); },
                                 [&](int CHumanItem::* member) { return std::to_string(item.*member); },
                                 [&](bool CHumanItem::* member) { return std::string(item.*member ? "1" : "0"); },
                                 [&](COleDateTime CHumanItem::* member) {
                                     return std::string((item.*member).Format("%Y-%m-%d").View());
                                 },
                                 [](std::monostate) { return std::string(); }},
                      field.member);
}

Value Shown(const Field& field, const Stored& value)
{
    if (!value) {
        return {};
    }
    if (field.IsText() || field.IsDate()) {
        return *value;
    }
    const int number = StoredNumber(value);
    if (field.IsFlag()) {
        return number != 0;
    }
    return field.name == kSex ? ShownSex(number) : Value(std::int64_t{number});
}

Value ShownSex(int number)
{
    const auto index = static_cast<std::size_t>(number);
    return number >= 0 && index < kSexes.size() ? Value(Choice{number, kSexes[index]}) : Value(std::int64_t{number});
}

} // namespace management
