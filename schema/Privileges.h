#pragma once

#include "platform/Api.h"

class CAConnect;

namespace schema {

/// Whether the account may add and change users, as far as the engine says without a write; true where it does not
/// tell.
/// @throws CAException.
QV_API bool MayWrite(CAConnect& conn);

} // namespace schema
