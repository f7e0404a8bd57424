#pragma once

#include "web/Http.h"

#include <string>

namespace web {

/// The file of the page at a path; the page itself for the places that it shows; 404 for all else.
Response PageAt(const Request& request);

} // namespace web
