#include "parameters.h"

#include <algorithm>
#include <cstring>

#include "errors.h"
#include "insert_columns.h"

namespace ormel::client {

namespace {

enum class Form { integer, real, text, bytes, clob, blob };

struct TypeForm {
    uint32_t type;
    Form form;
};
constexpr TypeForm kForms[] = {
    {1, Form::integer}, {25, Form::integer}, {2, Form::integer}, {3, Form::real},   {8, Form::text},  {9, Form::text},
    {10, Form::text},   {11, Form::bytes},   {12, Form::bytes},  {23, Form::bytes}, {13, Form::clob}, {14, Form::blob},
};

constexpr uint16_t kNullLength = 65535; // of a row's value that is no large object

// What the client keeps in the 16 bytes that the caller gives it for a large object. Zeroed, it was never written.
struct LobSlot {
    const char *data;
    uint32_t length;
    uint32_t written;
};
static_assert(sizeof(LobSlot) == 16);

const TypeForm *formOf(uint32_t type) {
    for (const TypeForm &known : kForms)
        if (known.type == type)
            return &known;
    return nullptr;
}

Form knownForm(const Parameter &parameter) {
    return formOf(parameter.type)->form;
}

bool isLob(Form form) {
    return form == Form::clob || form == Form::blob;
}

template <class T> T load(const void *from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

int64_t loadInteger(const uint8_t *from, uint32_t length) {
    switch (length) {
    case 1:
        return load<int8_t>(from);
    case 2:
        return load<int16_t>(from);
    case 4:
        return load<int32_t>(from);
    default:
        return load<int64_t>(from);
    }
}

bool isIntegerLength(uint32_t length) {
    return length == 1 || length == 2 || length == 4 || length == 8;
}

// Whether a number of the type can have the length.
bool lengthFits(Form form, uint32_t length) {
    if (form == Form::integer)
        return isIntegerLength(length);
    if (form == Form::real)
        return length == sizeof(double) || length == sizeof(float);
    return !isLob(form) || length == sizeof(LobSlot);
}

Value lobValue(Value value, const uint8_t *slotBytes, Form form) {
    const auto slot = load<LobSlot>(slotBytes);
    if (slot.written == 0)
        return value;
    value.kind = form == Form::clob ? Kind::text : Kind::bytes;
    value.data = slot.data;
    value.size = slot.length;
    return value;
}

Value plainValue(Value value, const uint8_t *data, uint32_t length, Form form) {
    if (form == Form::integer) {
        value.kind = Kind::integer;
        value.integer = loadInteger(data, length);
    } else if (form == Form::real) {
        value.kind = Kind::real;
        value.real = length == sizeof(float) ? static_cast<double>(load<float>(data)) : load<double>(data);
    } else {
        value.kind = form == Form::text ? Kind::text : Kind::bytes;
        value.data = reinterpret_cast<const char *>(data);
        value.size = form == Form::text ? strnlen(value.data, length) : length;
    }
    return value;
}

// Whether only zeros follow a text's end, with which a record is filled up.
bool endsThere(const char *text, uint32_t end, uint32_t length) {
    return std::all_of(text + end, text + length, [](char c) { return c == '\0'; });
}

} // namespace

const Parameter &Parameters::parameter(uint32_t position) const {
    if (position >= count())
        fail(kMisuse, "the statement has " + std::to_string(count()) + " parameters and none at position " +
                          std::to_string(position));
    return parameters_[position];
}

void Parameters::bind(uint32_t position, const Parameter &binding) {
    parameter(position);
    const TypeForm *form = formOf(binding.type);
    if (form == nullptr)
        fail(kValue, "parameter :" + std::to_string(position + 1) + ": no value has the type id " +
                         std::to_string(binding.type));
    if (binding.data != nullptr && !lengthFits(form->form, binding.length))
        fail(kValue, "parameter :" + std::to_string(position + 1) + ": a value of type id " +
                         std::to_string(binding.type) + " cannot take " + std::to_string(binding.length) + " bytes");
    parameters_[position] = binding;
    parameters_[position].bound = true;
}

uint32_t Parameters::writeLob(uint32_t position, uint32_t type, uint32_t row, uint32_t rows, const void *data,
                              uint32_t length) {
    const Parameter &binding = parameter(position);
    if (!binding.bound || binding.type != type || binding.data == nullptr)
        fail(kMisuse, "parameter :" + std::to_string(position + 1) + " is not bound to a large object of this kind");
    if (row >= rows)
        fail(kMisuse, "the parameter set has " + std::to_string(rows) + " rows and no row " + std::to_string(row));
    if (data == nullptr)
        return length;
    LobSlot slot = {static_cast<const char *>(data), length, 1};
    if (knownForm(binding) == Form::clob) {
        slot.length = static_cast<uint32_t>(strnlen(slot.data, length));
        if (!endsThere(slot.data, slot.length, length))
            fail(kValue, place(row, position) + ": a text ends at its first NUL, and more follows behind this one's");
    }
    std::memcpy(binding.data + size_t{row} * sizeof slot, &slot, sizeof slot);
    return length;
}

Value Parameters::at(uint32_t row, uint32_t position) const {
    const Parameter &binding = parameter(position);
    Value value;
    value.type = binding.type;
    if (binding.data == nullptr)
        return value;
    const Form form = knownForm(binding);
    const uint8_t *element = binding.data + size_t{row} * binding.length;
    if (isLob(form))
        return lobValue(value, element, form);
    const uint32_t length = binding.rowLengths != nullptr ? binding.rowLengths[row] : binding.length;
    if (binding.rowLengths != nullptr) {
        if (length == kNullLength)
            return value;
        // A text that fills its element had no room for a terminator, and was left out by whoever filled it.
        if (length > binding.length || (form == Form::text && length == binding.length) || !lengthFits(form, length))
            fail(kValue, place(row, position) + ": a value of " + std::to_string(length) + " bytes does not fit into " +
                             std::to_string(binding.length));
    }
    return plainValue(value, element, length, form);
}

bool Parameters::areOfSet() const {
    return std::any_of(parameters_.begin(), parameters_.end(),
                       [](const Parameter &parameter) { return parameter.rowLengths != nullptr; });
}

std::string Parameters::place(uint32_t row, uint32_t position) const {
    const std::string number = ":" + std::to_string(position + 1);
    const std::string column = insertedColumn(sql_, position);
    return "row " + std::to_string(row) +
           (column.empty() ? ", parameter " + number : ", column " + column + " (" + number + ")");
}

void Parameters::check(uint32_t rows) const {
    for (uint32_t position = 0; position < count(); ++position) {
        if (!parameters_[position].bound)
            fail(kMisuse, "parameter :" + std::to_string(position + 1) + " is not bound");
        for (uint32_t row = 0; row < rows; ++row)
            at(row, position);
    }
}

} // namespace ormel::client
