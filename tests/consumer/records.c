/* Built with pkg-config: inserts, selects, updates and deletes one record of PERSON (ID INTEGER, NAME VARCHAR(20)). */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <ormeldb.h>

/* Fields lie back to back; a text of 20 characters takes up to 80 bytes of UTF-8 and its NUL. */
struct person {
    int32_t id;
    char name[81];
} __attribute__((packed));

static void require(int holds, const char *what) {
    if (!holds) {
        fprintf(stderr, "records: %s\n", what);
        exit(1);
    }
}

static ORMEL_RECORD_BUFFER buffer_of(struct person *person) {
    ORMEL_RECORD_BUFFER buffer = {sizeof *person, 1, sizeof *person, 0, (uint8_t *)person};
    return buffer;
}

static uint32_t persons_with(const ORMEL_COND *condition) {
    uint32_t count = 0;
    require(ORMEL_LocalExistRecord("PERSON", condition, &count) == ORMEL_OK, "the records cannot be counted");
    return count;
}

static void expect_name(const ORMEL_COND *condition, const char *name) {
    struct person found = {0, ""};
    ORMEL_RECORD_BUFFER buffer = buffer_of(&found);
    require(ORMEL_SelectRec("PERSON", condition, 0, &buffer) == ORMEL_OK, "the record cannot be selected");
    require(buffer.usRecNum == 1 && found.id == 7 && strcmp(found.name, name) == 0, "the record is not as written");
}

int main(void) {
    const int32_t id = 7;
    struct person person = {7, "Ada"};
    const ORMEL_RECORD_BUFFER record = buffer_of(&person);
    ORMEL_COND *by_id = calloc(1, sizeof *by_id + sizeof *by_id->astCond);
    ORMEL_FIELD_SELECT *name_only = calloc(1, sizeof *name_only + 1);
    uint32_t changed = 0;

    require(by_id != NULL && name_only != NULL, "no memory");
    by_id->usCondNum = 1;
    memcpy(by_id->astCond[0].aucValue, &id, sizeof id);
    name_only->ucFieldNum = 1;
    name_only->aucFieldId[0] = 1;

    require(ORMEL_Init() == ORMEL_OK, "the library does not start");
    require(ORMEL_InsertRec("PERSON", &record) == ORMEL_OK, "the record cannot be inserted");
    require(persons_with(by_id) == 1, "the record is not there");
    expect_name(by_id, "Ada");
    strcpy(person.name, "Grace");
    require(ORMEL_UpdateRec("PERSON", name_only, &record, by_id, &changed) == ORMEL_OK && changed == 1,
            "the record cannot be updated");
    expect_name(by_id, "Grace");
    require(ORMEL_DeleteRec("PERSON", by_id, &changed) == ORMEL_OK && changed == 1, "the record cannot be deleted");
    require(persons_with(NULL) == 0, "the record is still there");
    ORMEL_UnInit();
    free(by_id);
    free(name_only);
    return 0;
}
