/* The table of transaction slots: sixteen connections that callers hold over several statements. */
#ifndef ORMELDB_TRANS_H
#define ORMELDB_TRANS_H

#include <pthread.h>

#include "base.h"
#include "config.h"
#include "res_att.h"

ORMEL_BEGIN_DECLS

/* One slot; in use while pConn is not NULL. 72 bytes. A slot is used by one thread at a time. */
typedef struct ORMEL_TRANS {
    const char *pcFunc; /* who took the slot: the caller's pointer, not a copy */
    uint32_t uiLine;
    void *pConn;              /* connection */
    ORMEL_RES_ATT *pstResAtt; /* descriptor of a select slot */
    char acCursor[28];        /* shown in the dump */
    void *pStmt;              /* open statement of a select slot */
} ORMEL_TRANS;

/* The slot table. 4248 bytes. */
typedef struct ORMEL_TRANS_MGR {
    uint32_t uiCount;      /* slots in use */
    uint32_t uiLast;       /* where the next search begins, modulo 16 */
    pthread_mutex_t mutex; /* taking and releasing slots */
    ORMEL_TRANS astTrans[ORMEL_MAX_SLOTS];
    char pcFullfile[512]; /* shown in the dump */
    char pcConnstr[512];  /* preset connection string */
    ORMEL_CONN_CFG stConnCfg;
    void *pStmt; /* NULL */
} ORMEL_TRANS_MGR;

/* The one table of the process. Read-only for callers, but for the preset connection string. */
ORMEL_API extern ORMEL_TRANS_MGR g_stTransMgr;

/* The address of g_stTransMgr. */
ORMEL_API ORMEL_TRANS_MGR *ORMEL_TransMgrGet(void);

/* Clears the table and reads the configuration; 0, or 0xFFFFFFFF. Called by ORMEL_Init. Not for several threads. */
ORMEL_API uint32_t ORMEL_TransMgrInit(void);

/* Closes the statement and connection of every slot, without a lock. Called by ORMEL_UnInit. */
ORMEL_API void ORMEL_TransMgrClean(void);

/* Index of a free slot, or 0xFFFFFFFF; moves the search start on by one. The caller holds the table's mutex. */
ORMEL_API uint32_t ORMEL_TransGetPos(ORMEL_TRANS_MGR *pstMgr);

/*
 * Takes a free slot and opens its connection, all under the table's mutex. pcFunc is kept by address and must live as
 * long as the process. NULL when all slots are taken, when there is no connection, or outside start and stop.
 */
ORMEL_API ORMEL_TRANS *OrmelFindUsableTrans(ORMEL_TRANS_MGR *pstMgr, const char *pcFunc, uint32_t uiLine);

/* A slot for an explicit transaction, or NULL. Any thread. */
ORMEL_API ORMEL_TRANS *ORMEL_NormalTransCreate(const char *pcFunc, uint32_t uiLine);

/* A slot that holds the descriptor of a table as well, or NULL. Any thread. */
ORMEL_API ORMEL_TRANS *ORMEL_SelectTransCreate(const char *pcTableName, const char *pcFunc, uint32_t uiLine);

/*
 * Frees the slot's statement, gives its descriptor back, closes its connection and with it what was not committed. A
 * free slot and NULL: nothing. Any thread, but no slot twice at once.
 */
ORMEL_API void ORMEL_TransDestory(ORMEL_TRANS *pstTrans);

/* Dumps the table to the log at TRACE. */
ORMEL_API void ORMEL_TransShow(ORMEL_TRANS_MGR *pstMgr);

/* A field of the slot; NULL for a NULL slot. */
ORMEL_API void *ORMEL_TransGetConn(ORMEL_TRANS *pstTrans);
ORMEL_API void *ORMEL_TransGetStmt(ORMEL_TRANS *pstTrans);
ORMEL_API ORMEL_RES_ATT *ORMEL_TransGetResAtt(ORMEL_TRANS *pstTrans);

/* Stores a field, which then belongs to the slot; what was there is not released. NULL slot: nothing. */
ORMEL_API void ORMEL_TransSetStmt(ORMEL_TRANS *pstTrans, void *pStmt);
ORMEL_API void ORMEL_TransSetResAtt(ORMEL_TRANS *pstTrans, ORMEL_RES_ATT *pstResAtt);

ORMEL_END_DECLS

#endif
