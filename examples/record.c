/* Inserts a record into CREATE TABLE city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT), and reads it. */
#include <ormeldb.h>
#include <stdio.h>

#pragma pack(push, 1) /* a record's fields lie back to back */
typedef struct City {
    int32_t id;
    char name[81]; /* 20 characters take up to 80 bytes of UTF-8, and a NUL */
    int64_t people;
} City;
#pragma pack(pop)

int main(void) {
    City written = {7, "Tromsø", 77992}, read = {0};
    ORMEL_RECORD_BUFFER in = {sizeof written, 1, sizeof written, 0, (uint8_t *)&written};
    ORMEL_RECORD_BUFFER out = {sizeof read, 0, sizeof read, 0, (uint8_t *)&read};
    ORMEL_ERROR error = {0};

    if (ORMEL_Init() != ORMEL_OK) { /* reads ../conf/db.conf and waits for the database */
        fputs("the library does not start: run this in the folder bin of a home, whose log says why\n", stderr);
        return 1;
    }
    uint32_t code = ORMEL_InsertRec("city", &in); /* commits on its own */
    if (code == ORMEL_OK)
        code = ORMEL_SelectRec("city", NULL, 0, &out); /* no conditions: every record, the first one into the buffer */
    if (code == ORMEL_OK)
        printf("%u record, %zu bytes: %d %s %lld\n", out.usRecNum, sizeof read, read.id, read.name,
               (long long)read.people);
    else if (ORMEL_LastError(&error) == ORMEL_OK)
        fprintf(stderr, "code %u: %s\n", code, error.acText);
    ORMEL_UnInit();
    return code == ORMEL_OK ? 0 : 1;
}
