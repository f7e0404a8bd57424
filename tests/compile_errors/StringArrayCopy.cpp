#include "platform/CStringArray.h"

int Size(const CStringArray& texts)
{
#ifdef QV_MISTAKE
    const CStringArray copy = texts;
#else
    const CStringArray& copy = texts;
#endif
    return copy.GetSize();
}
