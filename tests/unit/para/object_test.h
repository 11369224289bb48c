// Tests of request objects: they hold one, which is cleared at the end.
#ifndef UNIT_OBJECT_TEST_H
#define UNIT_OBJECT_TEST_H

#include "ormeldb/object.h"
#include "support/unit_test.h"

namespace unit {

// Room for 27 characters and not for one more.
inline const std::string kLongest(27, 'N');
inline const std::string kTooLong(28, 'N');

class ObjectTest : public UnitTest {
protected:
    void TearDown() override { ORMEL_ObjectParaClear(&object_); }

    // The records are packed: their pointers are read by value.
    ORMEL_OBJECT_ITEM Item(int i = 0) const { return object_.astItem[i]; }
    void *Address(int i = 0) const { return object_.astItem[i].pValue; }
    const char *Field(int i) const { return object_.apcSelectField[i]; }
    std::string Value(int i = 0, size_t extra = 0) const {
        return std::string(static_cast<const char *>(Address(i)), Item(i).uiLength + extra);
    }

    ORMEL_OBJECT object_{};
};

} // namespace unit

#endif
