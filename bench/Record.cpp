#include "bench/Record.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace bench {

namespace {

constexpr double kDaysTo1970 = 25569;
constexpr double kSecondsPerDay = 86400;

double LocalTime(std::time_t now)
{
    std::tm parts{};
    localtime_r(&now, &parts);
    const std::chrono::sys_days day = std::chrono::year(parts.tm_year + 1900) /
                                      std::chrono::month(static_cast<unsigned>(parts.tm_mon + 1)) /
                                      std::chrono::day(static_cast<unsigned>(parts.tm_mday));
    const double time = (parts.tm_hour * 3600 + parts.tm_min * 60 + parts.tm_sec) / kSecondsPerDay;
    return kDaysTo1970 + static_cast<double>(day.time_since_epoch().count()) + time;
}

// As the module's record does: the calendar is asked once a second, not once a record.
double CurrentLocalTime()
{
    static thread_local std::time_t second = -1;
    static thread_local double days = 0;
    const std::time_t now = std::time(nullptr);
    if (now != second) {
        days = LocalTime(now);
        second = now;
    }
    return days;
}

constexpr std::string Record::* kEscaped[] = {
    &Record::loginName,    &Record::name,     &Record::creatorName, &Record::note,        &Record::eMail,
    &Record::description,  &Record::homeCity, &Record::homeAddress, &Record::companyName, &Record::officeAddress,
    &Record::homeProvince, &Record::jobTitle, &Record::eCard,       &Record::deptInfo,    &Record::userData,
};

constexpr const char* kInsert =
    "INSERT INTO qv_User (Col_LoginName, Col_Name, Col_PWord, Col_IsSuper, Col_IsSystem, Col_Disabled, Col_Entype, "
    "Col_DomainID, Col_ItemIndex, Col_Creator_Name, Col_Note, Col_EMail, Col_Mobile, Col_Sex, Col_Description, "
    "Col_Birthday, Col_h_Province, Col_h_City, Col_h_Address, Col_h_PostCode, Col_h_Phone, Col_h_Fax, "
    "Col_o_CompanyName, Col_o_Address, Col_o_PostCode, Col_o_JobTitle, Col_o_Phone, Col_o_Fax, Col_ECard, "
    "Col_DeptInfo, Col_UserData, Col_DeptID, Col_Picture ) VALUES "
    "('%s','%s','%s',%d,%d,%d,%d,%d,%d,'%s','%s', '%s','%s',%d,'%s','%s','%s','%s', '%s','%s','%s','%s','%s', "
    "'%s','%s','%s','%s','%s', '%s','%s', '%s', %d, '%s')";

int Print(char* out, std::size_t room, const Record& r, const char* birthday)
{
    return std::snprintf(out, room, kInsert, r.loginName.c_str(), r.name.c_str(), r.password.c_str(), r.isSuper,
                         r.isSystem, r.disabled, r.enType, r.domainId, r.itemIndex, r.creatorName.c_str(),
                         r.note.c_str(), r.eMail.c_str(), r.mobile.c_str(), r.sex, r.description.c_str(), birthday,
                         r.homeProvince.c_str(), r.homeCity.c_str(), r.homeAddress.c_str(), r.homePostCode.c_str(),
                         r.homePhone.c_str(), r.homeFax.c_str(), r.companyName.c_str(), r.officeAddress.c_str(),
                         r.officePostCode.c_str(), r.jobTitle.c_str(), r.officePhone.c_str(), r.officeFax.c_str(),
                         r.eCard.c_str(), r.deptInfo.c_str(), r.userData.c_str(), r.deptId, r.picture.c_str());
}

} // namespace

Record::Record() : birthday(CurrentLocalTime()) {}

std::string DoubledQuotes(const std::string& text)
{
    std::size_t quote = text.find('\'');
    if (quote == std::string::npos) {
        return text;
    }
    std::string doubled;
    std::size_t from = 0;
    for (; quote != std::string::npos; quote = text.find('\'', from)) {
        doubled.append(text, from, quote + 1 - from).append("'");
        from = quote + 1;
    }
    return doubled.append(text, from);
}

std::array<char, 16> DateText(double days)
{
    const auto seconds = static_cast<std::time_t>((days - kDaysTo1970) * kSecondsPerDay);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 16> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d", &parts);
    return text;
}

std::string Capitals(std::string text)
{
    for (char& ch : text) {
        ch = ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
    }
    return text;
}

std::string BoundInsert()
{
    std::string sql = kInsert;
    for (const char* const place : {"'%s'", "%d"}) {
        for (std::size_t at = sql.find(place); at != std::string::npos; at = sql.find(place, at)) {
            sql.replace(at, std::strlen(place), "?");
        }
    }
    return sql;
}

std::string InsertStatement(const Record& record)
{
    Record escaped = record;
    for (const auto member : kEscaped) {
        if ((escaped.*member).find('\'') != std::string::npos) {
            escaped.*member = DoubledQuotes(escaped.*member);
        }
    }
    const auto birthday = DateText(escaped.birthday);
    std::array<char, 4096> buffer;
    const auto length = static_cast<std::size_t>(Print(buffer.data(), buffer.size(), escaped, birthday.data()));
    if (length < buffer.size()) {
        return {buffer.data(), length};
    }
    std::string sql(length, '\0');
    Print(sql.data(), length + 1, escaped, birthday.data());
    return sql;
}

} // namespace bench
