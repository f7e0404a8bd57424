#pragma once

#include <string_view>

namespace dbaccess {

/// Whether a host is this machine by its very name, so that what is sent there stays on it: "localhost" in any case,
/// 127.0.0.0/8 and ::1. No name is looked up.
bool IsLocalHost(std::string_view host);

} // namespace dbaccess
