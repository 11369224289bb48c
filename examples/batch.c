/*
 * A batch: many rows in one statement, all of them or none, with a column of large objects. It runs in the bin/ of a
 * home whose database has an empty table CREATE TABLE photo (id INTEGER PRIMARY KEY, title VARCHAR(20), image BLOB)
 */
#include <ormeldb.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { ROWS = 3, IMAGE_SIZE = 100000 };

/* Inserts ROWS photos with the ids from first on; the last one has no image yet. */
static uint32_t insertPhotos(int32_t first) {
    uint32_t code = ORMEL_ERR_FAILED;
    ORMEL_MULTI_OBJECT *photos = ORMEL_Multi_object_Init("photo", ROWS);
    char *image = malloc(IMAGE_SIZE);
    if (photos != NULL && image != NULL) {
        for (int32_t i = 0; i < ROWS; ++i) {
            ORMEL_OBJECT *photo = &photos->astObject[i]; /* every object lists the same columns in the same order */
            char title[20];
            snprintf(title, sizeof title, "photo %d", first + i);
            memset(image, i, IMAGE_SIZE);
            ORMEL_ObjectInt32Set(photo, "id", first + i);
            ORMEL_ObjectStrSet(photo, "title", title);
            if (i < ROWS - 1)
                ORMEL_ObjectBinarySet(photo, "image", image, IMAGE_SIZE); /* copied */
            else
                ORMEL_ObjectNullSet(photo, "image");
        }
        code = ORMEL_PatchInsertRecFormObj(photos); /* commits on its own */
    }
    free(image);
    ORMEL_Multi_object_UnInit(photos);
    return code;
}

static void report(const char *what, uint32_t code) {
    ORMEL_ERROR error = {0};
    if (code != ORMEL_OK)
        ORMEL_LastError(&error);
    printf("%s: code %u %s\n", what, code, error.acText);
}

static uint32_t printPhotos(void) {
    ORMEL_OBJECT all = {0};
    ORMEL_SELECT_RESULT photos = {0};
    ORMEL_ObjectNameSet(&all, "photo");
    const uint32_t code = ORMEL_SelectRecByObj(&all, &photos);
    for (uint32_t row = 0; code == ORMEL_OK && row < ORMEL_SelectResultRecNumGet(&photos); ++row) {
        const char *image = ORMEL_ResultBinaryGet(&photos, row, "image"); /* NULL: there is none */
        printf("%s: ", ORMEL_ResultStrGet(&photos, row, "title"));
        if (image == NULL)
            printf("no image\n");
        else
            printf("%u bytes of %d\n", ORMEL_ResultGetFieldLength(&photos, row, "image"), image[0]);
    }
    ORMEL_SelectResultClear(&photos);
    return code;
}

int main(void) {
    if (ORMEL_Init() != ORMEL_OK)
        return 1;
    report("1 to 3", insertPhotos(1));
    report("3 to 5", insertPhotos(3)); /* its first id is taken, so none of its rows stays */
    const uint32_t code = printPhotos();
    ORMEL_UnInit();
    return code == ORMEL_OK ? 0 : 1;
}
