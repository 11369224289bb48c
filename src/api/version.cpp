#include "ormeldb/version.h"

const char *ORMEL_Version() {
    return ORMELDB_VERSION;
}
