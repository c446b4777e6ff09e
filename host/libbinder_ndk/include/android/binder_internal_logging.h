// syslog for the header-only C++ part. liblog and syslog.h both define LOG_PRI: liblog's survives.
#pragma once

#pragma push_macro("LOG_PRI")
#ifdef LOG_PRI
#undef LOG_PRI
#endif
#include <syslog.h>
#pragma pop_macro("LOG_PRI")
