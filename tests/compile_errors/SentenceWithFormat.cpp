#include "management/Sentence.h"

#ifdef QV_MISTAKE
management::Sentence Made() { return management::FillPattern("{:x} of {}", 17, "a"); }
#else
management::Sentence Made() { return management::FillPattern("{1} of {0}", 17, "a"); }
#endif
