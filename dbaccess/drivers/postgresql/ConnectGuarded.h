#pragma once

#include "dbaccess/CAException.h"
#include "dbaccess/drivers/postgresql/Cursor.h"

#include <chrono>

namespace dbaccess::postgresql {

/// A server did not answer in time. Its text is a line as the client library writes it of one that fails.
class ConnectTimeout : public CAException {
public:
    using CAException::CAException;
};

/// Connects to one host as PQconnectdbParams does, but never answers a server that asks for the password itself over a
/// connection that is not encrypted. A server chooses how the password is proved, and the client library would tell it:
/// so the library gets one end of a pair of sockets in the place of its own while it connects, and nothing reaches it
/// that has not been looked at.
/// @param names, values  end with a null pointer.
/// @param limit  for each wait for the server; 0: none. @return a handle that may hold a failure, as the library's
/// does.
/// @throws ConnectTimeout; CAException for a server that asks for the password; std::bad_alloc.
Handle ConnectGuarded(const char* const* names, const char* const* values, std::chrono::seconds limit);

} // namespace dbaccess::postgresql
