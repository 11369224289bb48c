#ifndef ORMELDB_LIFECYCLE_H
#define ORMELDB_LIFECYCLE_H
#include "base.h"
#include "platform/tick.h"
#include "trans.h"
ORMEL_BEGIN_DECLS
ORMEL_API uint32_t ORMEL_Init(void);
ORMEL_API void ORMEL_UnInit(void);
ORMEL_API uint32_t ORMEL_CheckDbStatus(uint32_t uiSleep, uint32_t uiTryTimes, uint32_t uiTimeoutMs);
ORMEL_API void ORMEL_GetDeltaCpuTick(const XOS_CPU_TICK *pstStart, const XOS_CPU_TICK *pstEnd, XOS_CPU_TICK *pstDelta);
ORMEL_API void *ORMEL_DBConnect(void);
ORMEL_API void ORMEL_DBDisConnect(void *pConn);
ORMEL_API ORMEL_TRANS *ORMEL_StartTrans(const char *pcFunc, uint32_t uiLine);
ORMEL_API uint32_t ORMEL_CommitTrans(ORMEL_TRANS *pstTrans);
ORMEL_API uint32_t ORMEL_RollbackTrans(ORMEL_TRANS *pstTrans);
ORMEL_END_DECLS
#endif
