/* Start and stop of the library, connections of one's own, explicit transactions. */
#ifndef ORMELDB_LIFECYCLE_H
#define ORMELDB_LIFECYCLE_H

#include "base.h"
#include "platform/tick.h"
#include "trans.h"

ORMEL_BEGIN_DECLS

/*
 * Starts the library: log, descriptor cache, slot table and configuration, then ORMEL_CheckDbStatus(2, 6, 30000).
 *
 * Returns 0; 0xFFFFFFFF when "../conf/db.conf" cannot be read or there is no password. Ends the process with status 1
 * when the database stays unreachable. Once, from one thread, before all other use; again after ORMEL_UnInit or after
 * a failure.
 */
ORMEL_API uint32_t ORMEL_Init(void);

/*
 * Stops the library: closes the log, frees the cached descriptors, closes the connections of all slots. From one
 * thread, after all other use: end cursors before it, since one with select fields that is still open never gives its
 * descriptor back.
 */
ORMEL_API void ORMEL_UnInit(void);

/*
 * Tries to connect until it succeeds, uiSleep seconds apart (0: without a pause). From the uiTryTimes-th failure on,
 * more than uiTimeoutMs milliseconds since the call print one line on standard output and end the process with
 * exit(1). Returns 0.
 */
ORMEL_API uint32_t ORMEL_CheckDbStatus(uint32_t uiSleep, uint32_t uiTryTimes, uint32_t uiTimeoutMs);

/*
 * The difference of two clock readings, word by word. Where the low word did not grow it is one tick short, and equal
 * low words count as a borrow. NULL arguments: nothing.
 */
ORMEL_API void ORMEL_GetDeltaCpuTick(const XOS_CPU_TICK *pstStart, const XOS_CPU_TICK *pstEnd, XOS_CPU_TICK *pstDelta);

/*
 * A new connection with the configured data, or NULL: not started, or the database refuses. The caller closes it with
 * ORMEL_DBDisConnect; the ForConn operations work on it and never commit. Any thread; one thread per connection.
 */
ORMEL_API void *ORMEL_DBConnect(void);

/* Closes a connection and discards what was not committed. NULL: nothing. */
ORMEL_API void ORMEL_DBDisConnect(void *pConn);

/*
 * Takes a transaction slot, of which there are sixteen, and begins a transaction on it. pcFunc and uiLine name the
 * caller in the dump of the table; pcFunc is kept by address. End the slot with ORMEL_CommitTrans or
 * ORMEL_RollbackTrans. NULL when all slots are taken, or there is no connection or transaction; one that does not begin
 * is ended by a commit, of nothing. Any thread; one thread per slot.
 */
ORMEL_API ORMEL_TRANS *ORMEL_StartTrans(const char *pcFunc, uint32_t uiLine);

/* Commits and releases the slot, whatever came of it. 0; 1 when the commit failed or the slot is NULL. */
ORMEL_API uint32_t ORMEL_CommitTrans(ORMEL_TRANS *pstTrans);

/* Rolls back and releases the slot, whatever came of it. 0; 1 when the rollback failed or the slot is NULL. */
ORMEL_API uint32_t ORMEL_RollbackTrans(ORMEL_TRANS *pstTrans);

ORMEL_END_DECLS

#endif
