#ifndef ORMELDB_OBJECT_H
#define ORMELDB_OBJECT_H
#include "base.h"
ORMEL_BEGIN_DECLS
struct ORMEL_RES_ATT;
struct ORMEL_RES_ATT_FIELD;
#pragma pack(push, 4)
typedef struct ORMEL_OBJECT_ITEM {
    char acName[ORMEL_NAME_SIZE];
    uint32_t uiLength;
    void *pValue;
    uint32_t uiOp;
    struct ORMEL_RES_ATT_FIELD *pstInfo;
} ORMEL_OBJECT_ITEM;
typedef struct ORMEL_OBJECT {
    uint32_t uiReserved;
    int32_t iItemNum;
    char acTableName[ORMEL_NAME_SIZE];
    ORMEL_OBJECT_ITEM astItem[ORMEL_MAX_ITEMS];
    int32_t iSelectFieldNum;
    char *apcSelectField[ORMEL_MAX_SELECT_FIELDS];
    uint32_t isLimit;
    uint32_t iRowCounts;
    uint32_t iOffset;
} ORMEL_OBJECT;
typedef struct ORMEL_MULTI_OBJECT {
    char acTableName[ORMEL_NAME_SIZE];
    uint32_t uiRecNum;
    ORMEL_FLEXIBLE(ORMEL_OBJECT astObject[]);
} ORMEL_MULTI_OBJECT;
#pragma pack(pop)
ORMEL_API uint32_t ORMEL_ObjectNameSet(ORMEL_OBJECT *pstObj, const char *pcTableName);
ORMEL_API char *ORMEL_ObjectNameGet(ORMEL_OBJECT *pstObj);
ORMEL_API uint32_t ORMEL_ObjectNameSetForMulti(ORMEL_MULTI_OBJECT *pstMulti, const char *pcTableName);
ORMEL_API char *ORMEL_ObjectNameGetForMulti(ORMEL_MULTI_OBJECT *pstMulti);
ORMEL_API uint32_t ORMEL_ObjectBinarySet(ORMEL_OBJECT *pstObj, const char *pcName, const void *pValue, int32_t iLen);
ORMEL_API uint32_t ORMEL_ObjectInt8Set(ORMEL_OBJECT *pstObj, const char *pcName, int8_t cValue);
ORMEL_API uint32_t ORMEL_ObjectInt16Set(ORMEL_OBJECT *pstObj, const char *pcName, int16_t sValue);
ORMEL_API uint32_t ORMEL_ObjectInt32Set(ORMEL_OBJECT *pstObj, const char *pcName, int32_t iValue);
ORMEL_API uint32_t ORMEL_ObjectInt64Set(ORMEL_OBJECT *pstObj, const char *pcName, int64_t llValue);
ORMEL_API uint32_t ORMEL_ObjectStrSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
ORMEL_API uint32_t ORMEL_ObjectJsonSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
ORMEL_API uint32_t ORMEL_ObjectJsonbSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
ORMEL_API uint32_t ORMEL_ObjectTextSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcValue);
ORMEL_API uint32_t ORMEL_ObjectStrOptionLikeSet(ORMEL_OBJECT *pstObj, const char *pcName, const char *pcPattern);
ORMEL_API uint32_t ORMEL_ObjectNullSet(ORMEL_OBJECT *pstObj, const char *pcName);
ORMEL_API uint32_t ORMEL_ObjectSelectFieldSet(ORMEL_OBJECT *pstObj, const char *pcFieldName);
ORMEL_API uint32_t ORMEL_ObjectSelectRowCountSet(ORMEL_OBJECT *pstObj, uint32_t uiIsLimit, uint32_t uiRowCounts,
                                                 uint32_t uiOffset);
ORMEL_API uint32_t ORMEL_ObjectCheck(ORMEL_OBJECT *pstObj, struct ORMEL_RES_ATT *pstResAtt);
ORMEL_API void ORMEL_ObjectParaClear(ORMEL_OBJECT *pstObj);
ORMEL_END_DECLS
#endif
