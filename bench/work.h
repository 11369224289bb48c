// What both sides do, so that it is the same.
#pragma once

#include <cstddef>

namespace bench {

inline constexpr int kPeople = 10000;  // rows of the table people, with the keys 0 to kPeople - 1
inline constexpr int kCrowd = 1000000; // rows of the table crowd
inline constexpr int kRowsPerTransaction = 1000;
inline constexpr int kRowsPerBatch = 100000;
inline constexpr int kImages = 1000;
inline constexpr size_t kImageSize = 64 * 1024;

// The tables loaded and image, empty.
void makeBatchTables();

// The table crowd, filled once.
void makeCrowd();

} // namespace bench
