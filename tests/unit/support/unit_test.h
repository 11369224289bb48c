// What every test of the library's core stands on.
#ifndef UNIT_UNIT_TEST_H
#define UNIT_UNIT_TEST_H

#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client_double.h"
#include "clock_double.h"
#include "log_double.h"
#include "memory.h"

namespace unit {

using Lines = std::vector<std::string>;

// Starts with a client, a log and a heap that know nothing, and ends with nothing left of what the library was given:
// no connection, no statement, no block.
class UnitTest : public testing::Test {
protected:
    UnitTest() : blocks_(LiveBlocks()) {
        Client().Reset();
        Log().Reset();
        Clock().Reset();
        SetPassword("secret");
        g_pstVemloLogHandle = &Log();
        g_VemloLogLevel = 2;
        g_acLogPath[0] = '\0';
        g_frame_slot_id = 0;
    }

    // Runs when all that the test itself held is gone.
    ~UnitTest() override {
        EXPECT_EQ(Client().LiveConnections(), 0);
        EXPECT_EQ(Client().LiveStatements(), 0);
        EXPECT_EQ(LiveBlocks(), blocks_) << "blocks of the heap are left, or too many were freed";
    }

private:
    size_t blocks_;
};

// The values of both, one after the other.
template <class T> std::vector<T> operator+(std::vector<T> a, const std::vector<T> &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// An object's bytes, to tell whether anything in it was written.
template <class T> std::string BytesOf(const T &object) {
    return std::string(reinterpret_cast<const char *>(&object), sizeof(object));
}

} // namespace unit

#endif
