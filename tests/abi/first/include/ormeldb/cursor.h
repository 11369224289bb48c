#ifndef ORMELDB_CURSOR_H
#define ORMELDB_CURSOR_H
#include "result.h"
#include "trans.h"
ORMEL_BEGIN_DECLS
ORMEL_API ORMEL_TRANS *ORMEL_BeginSelect(const char *pcTableName, const char *pcFunc, uint32_t uiLine);
ORMEL_API ORMEL_TRANS *ORMEL_BeginSelectSpecifyField(ORMEL_OBJECT *pstObj, const char *pcFunc, uint32_t uiLine);
ORMEL_API uint32_t dbBeginFetchSpecifyField(ORMEL_TRANS *pstTrans, ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_FetchSelectRec(ORMEL_TRANS *pstTrans, ORMEL_RECORD_BUFFER *pstDsbuf);
ORMEL_API uint32_t ORMEL_FetchSelectRecEx(ORMEL_TRANS *pstTrans, ORMEL_SELECT_RESULT *pstResult);
ORMEL_API uint32_t ORMEL_EndSelect(ORMEL_TRANS *pstTrans);
ORMEL_END_DECLS
#endif
