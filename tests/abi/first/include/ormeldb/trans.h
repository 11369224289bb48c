#ifndef ORMELDB_TRANS_H
#define ORMELDB_TRANS_H
#include "base.h"
#include "config.h"
#include "res_att.h"
#include <pthread.h>
ORMEL_BEGIN_DECLS
typedef struct ORMEL_TRANS {
    const char *pcFunc;
    uint32_t uiLine;
    void *pConn;
    ORMEL_RES_ATT *pstResAtt;
    char acCursor[28];
    void *pStmt;
} ORMEL_TRANS;
typedef struct ORMEL_TRANS_MGR {
    uint32_t uiCount;
    uint32_t uiLast;
    pthread_mutex_t mutex;
    ORMEL_TRANS astTrans[ORMEL_MAX_SLOTS];
    char pcFullfile[512];
    char pcConnstr[512];
    ORMEL_CONN_CFG stConnCfg;
    void *pStmt;
} ORMEL_TRANS_MGR;
ORMEL_API extern ORMEL_TRANS_MGR g_stTransMgr;
ORMEL_API ORMEL_TRANS_MGR *ORMEL_TransMgrGet(void);
ORMEL_API uint32_t ORMEL_TransMgrInit(void);
ORMEL_API void ORMEL_TransMgrClean(void);
ORMEL_API uint32_t ORMEL_TransGetPos(ORMEL_TRANS_MGR *pstMgr);
ORMEL_API ORMEL_TRANS *OrmelFindUsableTrans(ORMEL_TRANS_MGR *pstMgr, const char *pcFunc, uint32_t uiLine);
ORMEL_API ORMEL_TRANS *ORMEL_NormalTransCreate(const char *pcFunc, uint32_t uiLine);
ORMEL_API ORMEL_TRANS *ORMEL_SelectTransCreate(const char *pcTableName, const char *pcFunc, uint32_t uiLine);
ORMEL_API void ORMEL_TransDestory(ORMEL_TRANS *pstTrans);
ORMEL_API void ORMEL_TransShow(ORMEL_TRANS_MGR *pstMgr);
ORMEL_API void *ORMEL_TransGetConn(ORMEL_TRANS *pstTrans);
ORMEL_API void *ORMEL_TransGetStmt(ORMEL_TRANS *pstTrans);
ORMEL_API ORMEL_RES_ATT *ORMEL_TransGetResAtt(ORMEL_TRANS *pstTrans);
ORMEL_API void ORMEL_TransSetStmt(ORMEL_TRANS *pstTrans, void *pStmt);
ORMEL_API void ORMEL_TransSetResAtt(ORMEL_TRANS *pstTrans, ORMEL_RES_ATT *pstResAtt);
ORMEL_END_DECLS
#endif
