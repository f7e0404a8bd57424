#include "management/Sentence.h"

#ifdef QV_MISTAKE
management::Sentence Made() { return management::FillPattern("{} and {}", "a"); }
#else
management::Sentence Made() { return management::FillPattern("{} and {}", "a", 1); }
#endif
