#pragma once

#include <cstddef>

// What a driver module and the library that loads it agree on.

namespace dbaccess {

class Session;

/// Opens a session: the part of a URL after its scheme, which need not end with a NUL. The caller owns what it returns.
/// @throws CAException with a sentence for people.
using OpenSessionFunction = Session*(const char* location, std::size_t length);

/// The name under which a module exports its function of that type.
inline constexpr const char* kOpenSessionSymbol = "QvOpenSession";

} // namespace dbaccess

/// Defines that function in a module. @param NAMESPACE  the driver's namespace within dbaccess, which has
/// OpenSession(std::string_view).
#define QV_DEFINE_DRIVER_MODULE(NAMESPACE)                                                                             \
    extern "C" QV_API dbaccess::Session* QvOpenSession(const char* location, std::size_t length);                      \
    extern "C" dbaccess::Session* QvOpenSession(const char* location, std::size_t length)                              \
    {                                                                                                                  \
        return dbaccess::NAMESPACE::OpenSession({location, length}).release();                                         \
    }
