#pragma once

#include "platform/GrowingArray.h"

/// Array of 32-bit unsigned numbers. Not copyable, as in the framework.
class CUIntArray : public platform::GrowingArray<unsigned int> {};
