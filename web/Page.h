#pragma once

#include "web/Http.h"

#include <string>

namespace web {

/// The file of the page at a path; the page itself for the places that it shows; 404 for all else.
/// @param isSignedIn  whether the request belongs to a session, which the page is told so that it need not ask first.
Response PageAt(const Request& request, bool isSignedIn);

/// By which a content security policy lets the script run that the page of somebody with a session begins with.
const std::string& EarlyScriptSource();

} // namespace web
