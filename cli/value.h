// Values between text, as people write and read it, and bytes, as records hold them.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace cli {

// A text that is no value of its column; what() is the reason, to be put behind the column's name.
struct ValueError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The name of a client type id, as people know it.
std::string typeName(uint32_t type);

// Whether values of the type line up at their right end.
bool isNumber(uint32_t type);

// Whether the type is text of bounded length.
bool isText(uint32_t type);

// Whether the type is a large object, which no record carries.
bool isLargeObject(uint32_t type);

// Whether the values of the type are texts or byte strings, of bounded length or not.
bool isTextOrBytes(uint32_t type);

// Writes a value into a field of a record or into the value of a condition, filled up with zeros. Throws ValueError
// where the text is no value of the type or the field cannot hold it.
void parseValue(uint32_t type, std::string_view text, std::span<uint8_t> field);

// The bytes of a value outside a record: numbers in the width of their type, texts and byte strings in their own
// length, which the column's size bounds unless it is a large object. Throws ValueError, as above.
std::string encodeValue(uint32_t type, std::string_view text, size_t size);

// Throws ValueError where bytes as they stand, a file's for example, are no value of a type of texts or byte strings.
void checkBytes(uint32_t type, std::string_view bytes, size_t size);

// Throws ValueError where the text is no decimal number: what travels as text is not looked at by the functions above.
void checkDecimal(std::string_view text);

// The text of a value: of numbers the shortest that reads back the same, of byte strings hexadecimal digits.
std::string formatValue(uint32_t type, std::span<const uint8_t> bytes);

} // namespace cli
