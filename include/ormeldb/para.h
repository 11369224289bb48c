/* Parameter lists: the one shape in which a statement's values reach the SQL builders and the binder. */
#ifndef ORMELDB_PARA_H
#define ORMELDB_PARA_H

#include "base.h"
#include "object.h"
#include "record.h"
#include "res_att.h"

ORMEL_BEGIN_DECLS

/* A condition of fixed-record callers. 264 bytes. */
typedef struct ORMEL_COND_ITEM {
    uint8_t ucFieldId; /* position of the column in the descriptor */
    uint8_t aucReserved[3];
    uint32_t uiOp;                           /* operator code */
    uint8_t aucValue[ORMEL_COND_VALUE_SIZE]; /* the value as it stands in a record */
} ORMEL_COND_ITEM;

/* A list of conditions, all of which must hold. 4 bytes and 264 for each. */
typedef struct ORMEL_COND {
    uint16_t usCondNum;
    uint16_t usReserved;
    ORMEL_FLEXIBLE(ORMEL_COND_ITEM astCond[]);
} ORMEL_COND;

/* The columns that an update sets. 4 bytes and 1 for each. */
typedef struct ORMEL_FIELD_SELECT {
    uint8_t ucFieldNum;
    uint8_t aucReserved[3];
    ORMEL_FLEXIBLE(uint8_t aucFieldId[]); /* positions in the descriptor */
} ORMEL_FIELD_SELECT;

/*
 * The list: slots 0 to iFieldNum-1 are fields, the iCondNum slots after them conditions. It is zeroed before use, owns
 * nothing, and what it points at must live until the statement has run. 1856 bytes.
 */
typedef struct ORMEL_PARA {
    int32_t iFieldNum;
    int32_t iCondNum;
    const char *name[ORMEL_MAX_ITEMS]; /* column name */
    void *value[ORMEL_MAX_ITEMS];      /* the value's bytes */
    uint32_t length[ORMEL_MAX_ITEMS];  /* and their number */
    uint32_t format[ORMEL_MAX_ITEMS];  /* of the descriptor entry */
    uint32_t op[ORMEL_MAX_ITEMS];      /* operator code of a condition; 23 for a field */
    uint8_t cell[ORMEL_MAX_ITEMS][8];  /* copies of record and condition values of up to 8 bytes */
    uint32_t type[ORMEL_MAX_ITEMS];    /* client type id */
    uint32_t reserved[ORMEL_MAX_ITEMS];
    int32_t iSelectFieldNum;
    char *selectField[ORMEL_MAX_SELECT_FIELDS]; /* names, borrowed from a request object */
    uint32_t isLimit;
    uint32_t iRowCounts;
    uint32_t iOffset;
} ORMEL_PARA;

#define ORMEL_PARA_OP_FIELD 23u

/*
 * Fills slot i from a record: a value of up to 8 bytes is copied into the slot's cell, a longer one is pointed at
 * where it lies. Nothing happens when a pointer is NULL, i is not 0 to 31, or, with an ERROR line, when the stated
 * record length or buffer size ends before the field does.
 */
ORMEL_API void ORMEL_ParaItemInit(ORMEL_PARA *pstPara, int32_t i, const ORMEL_RECORD_BUFFER *pstDsbuf,
                                  const ORMEL_RES_ATT_FIELD *pstEntry);

/*
 * Makes the selected columns (NULL: all) of the buffer's first record the fields of the list.
 *
 * Returns 0; 1, before anything is written and with an ERROR line, when the fields do not fit into 32 slots, a selected
 * position is outside the descriptor, the stated record length or buffer size is shorter than the table's record, or
 * a pointer is NULL.
 */
ORMEL_API uint32_t ORMEL_ParaFieldUpdateByDsbuf(ORMEL_PARA *pstPara, const ORMEL_FIELD_SELECT *pstFields,
                                                const ORMEL_RECORD_BUFFER *pstDsbuf, ORMEL_RES_ATT *pstResAtt);

/*
 * Makes the condition list the conditions of the list, after its fields. A text column wider than a condition's value
 * is compared with the 256 bytes there are.
 *
 * Returns 0; 1, before anything is written and with an ERROR line, when fields and conditions do not fit into 32 slots,
 * a position is outside the descriptor, a column of bytes is wider than a condition's value, or a pointer is NULL.
 */
ORMEL_API uint32_t ORMEL_ParaCondUpdateByCond(ORMEL_PARA *pstPara, const ORMEL_COND *pstCond, ORMEL_RES_ATT *pstResAtt);

/*
 * Makes the items of a checked request object the fields of the list.
 *
 * Returns 0; 1, before anything is written and with an ERROR line, when a count is outside its capacity, an item was
 * never checked, or a pointer is NULL.
 */
ORMEL_API uint32_t ORMEL_ParaFieldUpdateByObject(ORMEL_PARA *pstPara, ORMEL_OBJECT *pstObj);

/*
 * The same as conditions, after the list's fields, together with the object's select fields and paging. 98, in the same
 * way, when an item has no value: nothing equals NULL.
 */
ORMEL_API uint32_t ORMEL_ParaCondUpdateByObject(ORMEL_PARA *pstPara, ORMEL_OBJECT *pstObj);

/* Dumps the list to the log; 0, always. A count outside its capacity is shown as 0 slots. */
ORMEL_API uint32_t ORMEL_ParaShow(const ORMEL_PARA *pstPara);

/* Dumps one value at TRACE: types 8, 9, 10 and 13 as text, no further than len bytes, others byte by byte. */
ORMEL_API void ORMEL_ParaValueShow(uint32_t uiType, const void *pValue, uint32_t uiLen);

ORMEL_END_DECLS

#endif
