#include "object.h"

#include "home.h"
#include "value.h"

namespace cli {
namespace {

// A value's bytes, in the width that the column wants. A pattern is text also where the column has numbers in text.
std::string encoded(const Layout &layout, size_t position, const std::string &column, const std::string &text,
                    bool pattern) {
    try {
        const auto size = static_cast<size_t>(layout.columns()[position].len);
        return pattern ? encodeValue(layout.type(position), text, size) : layout.encode(position, text);
    } catch (const ValueError &error) {
        throw UsageError(column + ": " + error.what());
    }
}

} // namespace

// An empty text is a value without bytes, and so the way to give an empty byte string: the setter of bytes refuses it.
uint32_t appendValue(ORMEL_OBJECT &object, const char *column, std::optional<std::string_view> value) {
    if (!value)
        return ORMEL_ObjectNullSet(&object, column);
    if (value->empty())
        return ORMEL_ObjectStrSet(&object, column, "");
    return ORMEL_ObjectBinarySet(&object, column, value->data(), static_cast<int32_t>(value->size()));
}

Object::Object(const Layout &layout) : layout_(layout) {
    ORMEL_ObjectNameSet(&object_, layout.table().c_str());
}

Object::~Object() {
    ORMEL_ObjectParaClear(&object_);
}

const char *Object::name(size_t position) const {
    return layout_.columns()[position].attname;
}

// Counts and names have been checked, so that only memory can be wanting.
void Object::check(uint32_t code) const {
    if (code != ORMEL_OK)
        throw Failure("the library does not take the request for " + layout_.table() + "; the reason stands in " +
                      logFile());
}

void Object::append(size_t position, std::optional<std::string_view> value) {
    check(appendValue(object_, name(position), value));
}

void Object::assign(const std::vector<Assignment> &assignments) {
    const std::vector<size_t> positions = assignedColumns(layout_, assignments);
    for (size_t i = 0; i < assignments.size(); ++i) {
        const auto &[column, value] = assignments[i];
        if (value)
            append(positions[i], encoded(layout_, positions[i], column, *value, false));
        else
            append(positions[i], std::nullopt);
    }
}

void Object::assignBytes(const std::string &column, std::string_view bytes) {
    const size_t position = layout_.find(column);
    try {
        layout_.checkBytes(position, bytes);
    } catch (const ValueError &error) {
        throw UsageError(column + ": " + error.what());
    }
    append(position, bytes);
}

void Object::require(const std::vector<Condition> &conditions) {
    for (const auto &condition : conditions) {
        const size_t position = layout_.find(condition.column);
        checkOperator(layout_, position, condition);
        append(position, encoded(layout_, position, condition.column, condition.value, condition.op == ORMEL_OP_LIKE));
        object_.astItem[object_.iItemNum - 1].uiOp = condition.op;
    }
}

void Object::select(const std::vector<size_t> &positions) {
    for (const size_t position : positions)
        check(ORMEL_ObjectSelectFieldSet(&object_, name(position)));
}

void Object::page(uint32_t limit, uint32_t offset) {
    ORMEL_ObjectSelectRowCountSet(&object_, 1, limit, offset);
}

} // namespace cli
