#pragma once

#include "management/JsonWriter.h"
#include "web/Http.h"

#include <cstdint>
#include <sstream>
#include <utility>

namespace web {

/// A response with an object that begins with the version of the answers, "v".
/// @param write  `void write(management::JsonWriter&)`, the other members.
template <class Write>
Response JsonResponse(Write write)
{
    std::ostringstream out;
    management::JsonWriter json(out, management::JsonWriter::Layout::line);
    json.BeginObject();
    json.WriteMember("v", std::int64_t{1});
    write(json);
    json.End();
    return {200, "application/json", std::move(out).str()};
}

} // namespace web
