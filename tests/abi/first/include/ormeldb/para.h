#ifndef ORMELDB_PARA_H
#define ORMELDB_PARA_H
#include "base.h"
#include "object.h"
#include "record.h"
#include "res_att.h"
ORMEL_BEGIN_DECLS
typedef struct ORMEL_COND_ITEM {
    uint8_t ucFieldId;
    uint8_t aucReserved[3];
    uint32_t uiOp;
    uint8_t aucValue[ORMEL_COND_VALUE_SIZE];
} ORMEL_COND_ITEM;
typedef struct ORMEL_COND {
    uint16_t usCondNum;
    uint16_t usReserved;
    ORMEL_FLEXIBLE(ORMEL_COND_ITEM astCond[]);
} ORMEL_COND;
typedef struct ORMEL_FIELD_SELECT {
    uint8_t ucFieldNum;
    uint8_t aucReserved[3];
    ORMEL_FLEXIBLE(uint8_t aucFieldId[]);
} ORMEL_FIELD_SELECT;
typedef struct ORMEL_PARA {
    int32_t iFieldNum;
    int32_t iCondNum;
    const char *name[ORMEL_MAX_ITEMS];
    void *value[ORMEL_MAX_ITEMS];
    uint32_t length[ORMEL_MAX_ITEMS];
    uint32_t format[ORMEL_MAX_ITEMS];
    uint32_t op[ORMEL_MAX_ITEMS];
    uint8_t cell[ORMEL_MAX_ITEMS][8];
    uint32_t type[ORMEL_MAX_ITEMS];
    uint32_t reserved[ORMEL_MAX_ITEMS];
    int32_t iSelectFieldNum;
    char *selectField[ORMEL_MAX_SELECT_FIELDS];
    uint32_t isLimit;
    uint32_t iRowCounts;
    uint32_t iOffset;
} ORMEL_PARA;
#define ORMEL_PARA_OP_FIELD 23u
ORMEL_API void ORMEL_ParaItemInit(ORMEL_PARA *pstPara, int32_t i, const ORMEL_RECORD_BUFFER *pstDsbuf,
                                  const ORMEL_RES_ATT_FIELD *pstEntry);
ORMEL_API uint32_t ORMEL_ParaFieldUpdateByDsbuf(ORMEL_PARA *pstPara, const ORMEL_FIELD_SELECT *pstFields,
                                                const ORMEL_RECORD_BUFFER *pstDsbuf, ORMEL_RES_ATT *pstResAtt);
ORMEL_API uint32_t ORMEL_ParaCondUpdateByCond(ORMEL_PARA *pstPara, const ORMEL_COND *pstCond, ORMEL_RES_ATT *pstResAtt);
ORMEL_API uint32_t ORMEL_ParaFieldUpdateByObject(ORMEL_PARA *pstPara, ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_ParaCondUpdateByObject(ORMEL_PARA *pstPara, ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_ParaShow(const ORMEL_PARA *pstPara);
ORMEL_API void ORMEL_ParaValueShow(uint32_t uiType, const void *pValue, uint32_t uiLen);
ORMEL_END_DECLS
#endif
