#ifndef ORMELDB_ERROR_H
#define ORMELDB_ERROR_H
#include "base.h"
ORMEL_BEGIN_DECLS
typedef struct ORMEL_ERROR {
    uint32_t uiCode;
    char acClass[8];
    char acText[1024];
} ORMEL_ERROR;
ORMEL_API uint32_t ORMEL_LastError(ORMEL_ERROR *pstError);
ORMEL_END_DECLS
#endif
