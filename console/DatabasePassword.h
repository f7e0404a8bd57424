#pragma once

#include "console/Config.h"
#include "console/Terminal.h"

#include <string>

namespace console {

/// The URL of a database with the password for it, which comes from a prompt, where that is wanted, else from
/// QVADMIN_PASSWORD, the file of the setting password_file, or the credential qvadmin-password of systemd. As it is for
/// a SQLite file, for a URL that says itself where the password is, and where there is none of these.
/// @param ask  whether to ask. @throws Error (invalid, failed).
std::string WithPassword(const std::string& url, const Config& config, bool ask, Terminal& terminal);

/// Where WithPassword would take a password from, without a prompt; empty: from nowhere.
std::string PasswordOrigin(const Config& config);

} // namespace console
