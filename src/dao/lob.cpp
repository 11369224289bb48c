#include "dao/lob.h"

#include <cstdlib>
#include <cstring>

#include "dao/qdc.h"
#include "log/log.h"
#include "ormeldb/platform/opbbase.h"

namespace {

constexpr char kLogFile[] = "ormel_dao";
constexpr uint32_t kChunkSize = 1000;

struct Chunk {
    uint8_t bytes[kChunkSize];
    uint32_t length;
    uint32_t end; // not 0: the object has no more bytes
};

bool readChunk(const char *func, void *stmt, void *locator, bool clob, uint32_t offset, Chunk &chunk) {
    uint32_t chars = 0;
    uint32_t status = ORMEL_INVALID;
    chunk.length = 0;
    chunk.end = 0;
    if (locator != nullptr)
        status = clob ? qdc_read_clob(stmt, locator, offset, chunk.bytes, kChunkSize, &chars, &chunk.length, &chunk.end)
                      : qdc_read_blob(stmt, locator, offset, chunk.bytes, kChunkSize, &chunk.length, &chunk.end);
    // No bytes and no end would go on for ever; more bytes than asked for, or than a length can count, cannot be.
    const bool sound =
        chunk.length <= kChunkSize && (chunk.length > 0 || chunk.end != 0) && chunk.length < UINT32_MAX - offset;
    if (status == 0 && sound)
        return true;
    ORMEL_LOG_AS(func, KPL_LOG_ERROR, "%s failed", clob ? "qdc_read_clob" : "qdc_read_blob");
    return false;
}

// Makes the cell's block as long as the length that is counted for it, so that readers of the length stay inside.
bool growTo(DB_FIELD &field, uint32_t size, uint32_t length) {
    if (length <= size)
        return true;
    auto *block = static_cast<uint8_t *>(std::realloc(field.pValue, size_t{length} + 1));
    if (block == nullptr)
        return false;
    std::memset(block + size, 0, size_t{length} + 1 - size);
    field.pValue = block;
    return true;
}

} // namespace

bool ormel::readLob(const char *func, void *stmt, void *locator, uint32_t size, DB_FIELD &field) {
    const bool clob = field.usType == QDC_TYPE_CLOB;
    uint32_t offset = 0;
    Chunk chunk;
    do {
        if (!readChunk(func, stmt, locator, clob, offset, chunk))
            return false;
        if (chunk.length > 0) {
            const uint32_t room = offset < size ? size - offset : 0;
            if (chunk.length > room)
                ORMEL_LOG_AS(func, KPL_LOG_ERROR, "copy data failed");
            else
                std::memcpy(static_cast<uint8_t *>(field.pValue) + offset, chunk.bytes, chunk.length);
        }
        offset += chunk.length;
    } while (chunk.end == 0);
    if (!growTo(field, size, offset))
        return false;
    field.uiLength = offset;
    if (clob)
        ORMEL_LOG_AS(func, KPL_LOG_DEBUG, "qdc_read_clob value:%.*s datasize:%d offset:%d",
                     textLength(field.pValue, offset), static_cast<const char *>(field.pValue), static_cast<int>(size),
                     static_cast<int>(offset));
    return true;
}
