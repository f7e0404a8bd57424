#pragma once

#include "platform/CString.h"
#include "platform/GrowingArray.h"

/// Array of texts. Not copyable, as in the framework.
class CStringArray : public platform::GrowingArray<CString> {};
