#include "console/OtherUrl.h"

#include "console/Url.h"
#include "management/Errors.h"

#include <fmt/format.h>

namespace console {

using management::Error;
using management::ErrorCode;
using management::FillPattern;

namespace {

/// The option of a URL that names a file with the password.
std::string_view PasswordFileOption(std::string_view url)
{
    return url.starts_with("odbc:") ? "password-file" : url.starts_with("postgresql:") ? "passfile" : "defaults-file";
}

} // namespace

void RequireOtherUrl(const std::string& url, std::string_view source)
{
    RequireScheme(url, source);
    if (HoldsPassword(url)) {
        throw Error(ErrorCode::invalid, FillPattern("a password in {} could be read by others; put it into a file that "
                                                    "only you can open, and name that with {}=FILE in the URL",
                                                    source, PasswordFileOption(url)));
    }
}

} // namespace console
