/* Select results: a table's descriptor together with rows of it. */
#ifndef ORMELDB_RESULT_H
#define ORMELDB_RESULT_H

#include "dao.h"

ORMEL_BEGIN_DECLS

/* What a select hands out; 24 bytes, zeroed by the caller. */
typedef struct ORMEL_SELECT_RESULT {
    ORMEL_RES_ATT *pstResAtt;
    DB_RESULT *pstRes;
    uint32_t uiRecNum; /* records selected */
} ORMEL_SELECT_RESULT;

ORMEL_END_DECLS

#endif
