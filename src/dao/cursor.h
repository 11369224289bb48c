// The statement of a cursor that reads by a parameter list.
#pragma once

#include "dao/owners.h"

namespace ormel {

// Prepares, binds and executes the list's select, for dbBeginFetchSpecifyField; empty where a step fails, which the log
// tells.
Statement openSelect(void *conn, const char *table, const ORMEL_PARA &para);

} // namespace ormel
