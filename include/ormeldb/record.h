/* Record buffers: rows as fixed-layout records. */
#ifndef ORMELDB_RECORD_H
#define ORMELDB_RECORD_H

#include "base.h"

ORMEL_BEGIN_DECLS

struct ORMEL_RES_ATT;
struct DB_RESULT;

#pragma pack(push, 4)

/*
 * A caller's block of equally long records. 20 bytes, packed to 4. Record i begins at pucData + i * usRecLen; a
 * record's fields lie back to back in the table's column order, without padding (the descriptor of the table gives
 * every offset and length).
 */
typedef struct ORMEL_RECORD_BUFFER {
    uint16_t usRecLen;  /* bytes of one record; 0 where a write does not state it */
    uint16_t usRecNum;  /* records held: set by selects, read by conversions of ranges */
    uint32_t uiBufSize; /* bytes of the block; 0 where a write does not state it */
    uint32_t uiReserved;
    uint8_t *pucData; /* the block, the caller's */
} ORMEL_RECORD_BUFFER;

#pragma pack(pop)

/*
 * Writes the rows of a result into the block, from record 0 on, and sets usRecNum to the row count modulo 65536. Each
 * record is zeroed first, integers of 4 bytes are stored as such, everything else byte for byte; NULL is left as
 * zeros.
 *
 * It fills one row: from the second row on only columns with an empty value are taken, every other one ends its row
 * with an INFO line (use ORMEL_CreatDsbufRangeByRes for many rows). A block that is too small ends the writing with an
 * INFO line. A value longer than its field is cut to the field with an ERROR line that names the column; nothing is
 * ever written past a record or past uiBufSize.
 *
 * Returns 0, always; nothing happens when a pointer is NULL.
 */
ORMEL_API uint32_t ORMEL_CreatDsbufByRes(ORMEL_RECORD_BUFFER *pstDsbuf, const struct DB_RESULT *pstRes,
                                         const struct ORMEL_RES_ATT *pstResAtt);

/*
 * Writes usRecNum rows of a result, beginning with row uiStartRow, into the block as records 0, 1, 2 ... The block
 * has room for usRecNum * usRecLen bytes (uiBufSize is not looked at). Values are stored as by ORMEL_CreatDsbufByRes.
 *
 * Returns 0; 1 when the result has too few rows (nothing is written) or a pointer is NULL.
 */
ORMEL_API uint32_t ORMEL_CreatDsbufRangeByRes(ORMEL_RECORD_BUFFER *pstDsbuf, uint32_t uiStartRow,
                                              const struct DB_RESULT *pstRes, const struct ORMEL_RES_ATT *pstResAtt);

ORMEL_END_DECLS

#endif
