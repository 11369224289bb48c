/* The version of this header and of the library that runs. */
#ifndef ORMELDB_VERSION_H
#define ORMELDB_VERSION_H

#include "base.h"

#define ORMELDB_VERSION_MAJOR 0
#define ORMELDB_VERSION_MINOR 1
#define ORMELDB_VERSION_PATCH 0
#define ORMELDB_VERSION "0.1.0"

ORMEL_BEGIN_DECLS

/*
 * The version of the loaded library as text, "major.minor.patch"; constant, never NULL, not to be freed. Compare it
 * with ORMELDB_VERSION to tell a program built against another header. An addition of this library. Any thread, at
 * any time.
 */
ORMEL_API const char *ORMEL_Version(void);

ORMEL_END_DECLS

#endif
