#pragma once

#include "web/Http.h"
#include "web/JobControl.h"
#include "web/JsonReader.h"

#include <string>

class CAConnect;

namespace web {

/// A directory, or a part of it, as a file: never with passwords.
struct ExportOrder {
    /// @param body  the request's: `format` (json, csv or ldif), `in` (a group or view), `base` (of ldif).
    /// @throws management::Error (invalid).
    explicit ExportOrder(const JsonValue& body);

    std::string format;
    std::string in;
    std::string base;
};

/// Writes what an order asks for, as the directory is at one moment. To be called on the thread that uses the module's
/// operations. @return the file. @throws management::Error, also (invalid) for more than 256 MiB, and (failed) when it
/// was stopped.
Response Export(CAConnect& conn, const ExportOrder& order, JobControl& control);

} // namespace web
