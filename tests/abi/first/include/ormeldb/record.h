#ifndef ORMELDB_RECORD_H
#define ORMELDB_RECORD_H
#include "base.h"
ORMEL_BEGIN_DECLS
struct ORMEL_RES_ATT;
struct DB_RESULT;
#pragma pack(push, 4)
typedef struct ORMEL_RECORD_BUFFER {
    uint16_t usRecLen;
    uint16_t usRecNum;
    uint32_t uiBufSize;
    uint32_t uiReserved;
    uint8_t *pucData;
} ORMEL_RECORD_BUFFER;
#pragma pack(pop)
ORMEL_API uint32_t ORMEL_CreatDsbufByRes(ORMEL_RECORD_BUFFER *pstDsbuf, const struct DB_RESULT *pstRes,
                                         const struct ORMEL_RES_ATT *pstResAtt);
ORMEL_API uint32_t ORMEL_CreatDsbufRangeByRes(ORMEL_RECORD_BUFFER *pstDsbuf, uint32_t uiStartRow,
                                              const struct DB_RESULT *pstRes, const struct ORMEL_RES_ATT *pstResAtt);
ORMEL_END_DECLS
#endif
