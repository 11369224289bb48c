#include "refusal.h"

#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include <ormeldb.h>
#include <ormeldb/qdc.h>

namespace concurrency {

namespace {

constexpr uint32_t kSqliteBusy = 5;

ORMEL_ERROR last() {
    ORMEL_ERROR error = {};
    ORMEL_LastError(&error);
    return error;
}

} // namespace

LastError::LastError() {
    EXPECT_EQ(qdc_alloc_conn(&silent_), 0U);
}

LastError::~LastError() {
    qdc_free_conn(silent_);
}

// What such a connection has to say, number 0 and no words, takes the place of what was said before.
void LastError::forget() {
    if (!isNone())
        dbPrintError(silent_);
}

bool LastError::isRefusal() {
    const ORMEL_ERROR error = last();
    for (const char *state : {"40001", "40P01", "55P03"}) // serialization, deadlock, lock not available
        if (std::strcmp(error.acClass, state) == 0)
            return true;
    return error.acClass[0] == '\0' && (error.uiCode & 0xFF) == kSqliteBusy;
}

bool LastError::isNone() {
    const ORMEL_ERROR error = last();
    return error.uiCode == 0 && error.acText[0] == '\0';
}

std::string LastError::text() {
    const ORMEL_ERROR error = last();
    return std::to_string(error.uiCode) + " " + error.acText;
}

} // namespace concurrency
