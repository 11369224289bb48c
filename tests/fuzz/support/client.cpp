#include "client.h"

#include <list>
#include <map>
#include <memory>
#include <utility>

#include "dao/qdc.h"
#include "require.h"

namespace fuzz {

namespace {

constexpr uint16_t kTypes[] = {1, 2, 3, 8, 9, 10, 11, 12, 13, 14, 23, 25, 0, 4, 99};
constexpr uint16_t kNull = 65535;
constexpr uint32_t kLobSlot = 16;
constexpr uint32_t kUnknownLob = 44;
constexpr uint32_t kFailed = 17;

Client *g_client = nullptr;

bool isLob(uint32_t type) {
    return type == 13 || type == 14;
}

uint16_t widthOf(uint16_t type) {
    if (type == 1 || type == 25)
        return 4;
    return type == 2 || type == 3 ? 8 : 0;
}

uint16_t sizeOf(Input &input) {
    return input.rarely() ? input.take<uint16_t>() : static_cast<uint16_t>(input.upTo(80));
}

// A column as no table has it.
Column strange(Input &input) {
    Column column;
    column.name = input.text(60);
    column.type = input.rarely() ? input.take<uint16_t>() : input.oneOf(kTypes);
    column.size = sizeOf(input);
    column.format = static_cast<uint8_t>(input.upTo(2));
    column.named = !input.rarely();
    column.described = !input.rarely();
    return column;
}

struct Binding {
    uint32_t type = 0;
    uint8_t *value = nullptr;
    uint32_t length = 0;
    const uint16_t *rowLengths = nullptr;
};

struct Cell {
    std::unique_ptr<uint8_t[]> bytes;
    uint32_t size = 0;    // of a large object's content
    bool locator = false; // the bytes say nothing
};

} // namespace

struct ConnectionHandle {
    std::list<struct StatementHandle> statements;
};

struct StatementHandle {
    ConnectionHandle *owner;
    std::string sql = {};
    bool probe = false;
    std::vector<Column> columns = {};
    uint32_t rowsLeft = 0;
    uint32_t parameterRows = 1;
    std::map<uint32_t, Binding> bindings = {};
    std::map<uint32_t, Cell> cells = {};
};

namespace {

Client &client() {
    require(g_client != nullptr, "the client is called for an input");
    return *g_client;
}

StatementHandle &of(void *stmt) {
    require(stmt != nullptr, "a statement is handed over");
    return *static_cast<StatementHandle *>(stmt);
}

// Reads bytes as a database would.
void readAll(const void *bytes, size_t size) {
    for (size_t i = 0; i < size; ++i)
        static_cast<void>(static_cast<const volatile uint8_t *>(bytes)[i]);
}

void readValue(const Binding &binding, uint32_t row) {
    if (binding.value == nullptr)
        return;
    uint32_t length = binding.length;
    if (binding.rowLengths != nullptr && !isLob(binding.type))
        length = binding.rowLengths[row] == kNull ? 0 : std::min<uint32_t>(length, binding.rowLengths[row]);
    readAll(binding.value + size_t{row} * binding.length, length);
}

bool isCount(const StatementHandle &stmt) {
    return stmt.sql.rfind("SELECT count(*)", 0) == 0;
}

// As many placeholders as values, each with a value. A hostile database has colons in its columns' names.
void checkBindings(const StatementHandle &stmt) {
    if (client().hostile)
        return;
    const auto placeholders = static_cast<size_t>(std::count(stmt.sql.begin(), stmt.sql.end(), ':'));
    require(placeholders == stmt.bindings.size(), "a statement has a value for every placeholder");
}

std::vector<Column> columnsOf(const StatementHandle &stmt) {
    Client &host = client();
    if (!host.hostile)
        return isCount(stmt) ? std::vector<Column>{{"COUNT", 2, 8, 1}} : host.table;
    std::vector<Column> columns(host.input.upTo(host.input.rarely() ? 300 : 12));
    for (Column &column : columns)
        column = strange(host.input);
    return columns;
}

// How many bytes the client says a value has. Only of large objects that may be a lie: of them it hands out locators.
uint32_t sizeOfCell(Input &input, const Column &column, bool hostile) {
    const bool locator = isLob(column.type) && column.described;
    if (hostile && locator && input.rarely())
        return UINT32_MAX - input.upTo(1);
    if (locator && input.upTo(1) == 0)
        return kUnknownLob;
    if (!hostile && widthOf(column.type) != 0)
        return widthOf(column.type);
    return sizeOf(input);
}

uint32_t readLob(void *stmt, void *locator, uint32_t offset, void *buffer, uint32_t size, uint32_t *bytes,
                 uint32_t *end) {
    Client &host = client();
    for (const auto &[position, cell] : of(stmt).cells) {
        if (cell.bytes.get() != locator)
            continue;
        const uint32_t left = cell.size > offset ? cell.size - offset : 0;
        *bytes = std::min(size, left);
        *end = *bytes == left ? 1 : 0;
        if (host.hostile && host.input.rarely()) {
            *end = host.input.upTo(1);
            *bytes = host.input.upTo(3) == 0 ? host.input.take<uint32_t>() : host.input.upTo(size);
        }
        std::memset(buffer, 'x', std::min(*bytes, size));
        return host.fails() ? kFailed : 0;
    }
    require(false, "a large object is read by its locator");
    return kFailed;
}

uint32_t writeLob(void *stmt, uint32_t position, const void *bytes, uint32_t length) {
    require(isLob(of(stmt).bindings[position].type), "a large object is written into its slot");
    readAll(bytes, length);
    return client().fails() ? kFailed : 0;
}

uint32_t describe(const Column &column, QDC_COLUMN_DESC *desc) {
    if (!column.described)
        return kFailed;
    desc->pcName = column.named ? column.name.c_str() : nullptr;
    desc->usSize = column.size;
    desc->usType = column.type;
    desc->ucFormat = column.format;
    return 0;
}

} // namespace

std::vector<Column> tableOf(Input &input, uint32_t most) {
    std::vector<Column> columns(1 + input.upTo(most - 1));
    for (size_t i = 0; i < columns.size(); ++i) {
        const uint16_t type = input.oneOf(kTypes);
        const uint16_t width = input.rarely() ? 0 : widthOf(type);
        columns[i] = {"C" + std::to_string(i), type, width != 0 ? width : sizeOf(input),
                      width != 0 ? uint8_t{1} : uint8_t{0}};
    }
    return columns;
}

Client::Client(Input &bytes, std::vector<Column> columns) : input(bytes), hostile(false), table(std::move(columns)) {
    g_client = this;
}

Client::Client(Input &bytes) : input(bytes), hostile(true) {
    g_client = this;
}

Client::~Client() {
    g_client = nullptr;
    require(live == 0, "every connection and every statement is given back");
}

Connection::Connection() {
    qdc_alloc_conn(&handle_);
}

Connection::~Connection() {
    if (handle_ != nullptr)
        qdc_free_conn(handle_);
}

} // namespace fuzz

using namespace fuzz;

extern "C" {

uint32_t qdc_alloc_conn(void **ppConn) {
    if (client().fails())
        return kFailed;
    *ppConn = new ConnectionHandle;
    ++client().live;
    return 0;
}

uint32_t qdc_set_conn_attr(void *, uint32_t, const void *pValue, uint32_t) {
    readAll(pValue, sizeof(uint32_t));
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_connect(void *, const char *pcAddress, const char *pcUser, const char *pcPassword) {
    for (const char *text : {pcAddress, pcUser, pcPassword})
        readAll(text, std::strlen(text));
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_disconnect(void *) {
    return client().fails() ? kFailed : 0;
}

// What was left open ends with its connection.
uint32_t qdc_free_conn(void *pConn) {
    auto *conn = static_cast<ConnectionHandle *>(pConn);
    client().live -= 1 + static_cast<int>(conn->statements.size());
    delete conn;
    return 0;
}

uint32_t qdc_alloc_stmt(void *pConn, void **ppStmt) {
    if (client().fails())
        return kFailed;
    auto *conn = static_cast<ConnectionHandle *>(pConn);
    *ppStmt = &conn->statements.emplace_back(StatementHandle{conn});
    ++client().live;
    return 0;
}

uint32_t qdc_free_stmt(void *pStmt) {
    of(pStmt).owner->statements.remove_if([&](const StatementHandle &known) { return &known == pStmt; });
    --client().live;
    return 0;
}

uint32_t qdc_set_stmt_attr(void *, uint32_t, const void *pValue, uint32_t) {
    readAll(pValue, sizeof(uint32_t));
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_prepare(void *pStmt, const char *pcSql) {
    StatementHandle &stmt = of(pStmt);
    stmt.sql = pcSql;
    stmt.probe = stmt.sql.find(" where 1<>1") != std::string::npos;
    return client().fails() ? kFailed : 0;
}

// The slots of large objects are zeroed, and filled here as a client fills them.
uint32_t qdc_bind_by_pos(void *pStmt, uint32_t uiPos, uint32_t uiType, void *pValue, uint32_t uiLen,
                         uint16_t *pusRowLens) {
    StatementHandle &stmt = of(pStmt);
    const Binding binding = {uiType, static_cast<uint8_t *>(pValue), uiLen, pusRowLens};
    for (size_t i = 0; isLob(uiType) && pValue != nullptr && i < size_t{stmt.parameterRows} * uiLen; ++i)
        require(std::exchange(binding.value[i], 0xAA) == 0, "the slot of a large object is zeroed");
    require(!isLob(uiType) || uiLen == kLobSlot, "the slot of a large object has 16 bytes");
    stmt.bindings[uiPos] = binding;
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_set_paramset_size(void *pStmt, uint32_t uiRows) {
    of(pStmt).parameterRows = uiRows;
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_execute(void *pStmt) {
    StatementHandle &stmt = of(pStmt);
    checkBindings(stmt);
    for (const auto &[position, binding] : stmt.bindings)
        for (uint32_t row = 0; row < stmt.parameterRows; ++row)
            readValue(binding, row);
    if (client().fails())
        return kFailed;
    stmt.columns = columnsOf(stmt);
    stmt.rowsLeft = stmt.probe ? 0 : client().input.upTo(5);
    client().executed += stmt.probe ? 0 : 1;
    client().rowsBound += stmt.bindings.empty() ? 0 : stmt.parameterRows;
    return 0;
}

uint32_t qdc_fetch(void *pStmt, uint32_t *puiRows) {
    StatementHandle &stmt = of(pStmt);
    stmt.cells.clear();
    *puiRows = stmt.rowsLeft > 0 ? 1 : 0;
    stmt.rowsLeft -= *puiRows;
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_get_affected_rows(void *pStmt) {
    Client &host = client();
    if (host.hostile && host.input.rarely())
        return host.input.rarely() ? UINT32_MAX : host.input.upTo(1000);
    return of(pStmt).sql.rfind("INSERT", 0) == 0 ? of(pStmt).parameterRows : of(pStmt).rowsLeft;
}

uint32_t qdc_get_column_count(void *pStmt, uint32_t *puiCount) {
    Client &host = client();
    *puiCount = static_cast<uint32_t>(of(pStmt).columns.size());
    if (host.hostile && host.input.rarely())
        *puiCount = host.input.rarely() ? UINT32_MAX : host.input.upTo(400);
    return host.fails() ? kFailed : 0;
}

uint32_t qdc_desc_column_by_id(void *pStmt, uint32_t uiCol, QDC_COLUMN_DESC *pstDesc) {
    Client &host = client();
    StatementHandle &stmt = of(pStmt);
    // Nobody can tell a locator but by its description, which therefore does not fail.
    if (const auto cell = stmt.cells.find(uiCol); cell != stmt.cells.end() && cell->second.locator)
        return describe(stmt.columns[uiCol], pstDesc);
    if (host.fails() || uiCol >= stmt.columns.size())
        return kFailed;
    if (host.hostile && host.input.rarely())
        stmt.columns[uiCol] = strange(host.input);
    return describe(stmt.columns[uiCol], pstDesc);
}

uint32_t qdc_desc_column_by_name(void *pStmt, const char *pcName, QDC_COLUMN_DESC *pstDesc) {
    for (const Column &column : of(pStmt).columns)
        if (column.name == pcName)
            return describe(column, pstDesc);
    return kFailed;
}

uint32_t qdc_get_column_by_id(void *pStmt, uint32_t uiCol, void **ppData, uint32_t *puiSize, uint32_t *puiIsNull) {
    Client &host = client();
    StatementHandle &stmt = of(pStmt);
    if (host.fails() || uiCol >= stmt.columns.size())
        return kFailed;
    const Column &column = stmt.columns[uiCol];
    *puiIsNull = host.input.rarely() ? 1 : 0;
    *puiSize = sizeOfCell(host.input, column, host.hostile);
    Cell &cell = stmt.cells[uiCol];
    cell.locator = isLob(column.type) && column.described;
    cell.size = cell.locator ? host.input.upTo(3000) : *puiSize;
    // A large object's locator has no bytes that anybody but the client may read.
    const uint32_t block = cell.locator ? 1 : *puiSize;
    cell.bytes = std::make_unique<uint8_t[]>(block);
    // A count says how many rows room is made for: few, or more than there can be.
    if (isCount(stmt))
        std::memset(cell.bytes.get(), host.input.rarely() ? 0xFF : 0, block);
    host.input.copy(cell.bytes.get(), std::min<uint32_t>(block, isCount(stmt) ? 1 : 8));
    *ppData = host.hostile && host.input.rarely() ? nullptr : cell.bytes.get();
    return 0;
}

uint32_t qdc_read_clob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiChars, uint32_t *puiBytes, uint32_t *puiEof) {
    *puiChars = 0;
    return readLob(pStmt, pLocator, uiOffset, pBuf, uiBufSize, puiBytes, puiEof);
}

uint32_t qdc_read_blob(void *pStmt, void *pLocator, uint32_t uiOffset, void *pBuf, uint32_t uiBufSize,
                       uint32_t *puiBytes, uint32_t *puiEof) {
    return readLob(pStmt, pLocator, uiOffset, pBuf, uiBufSize, puiBytes, puiEof);
}

uint32_t qdc_write_clob(void *pStmt, uint32_t uiPos, const void *pText, uint32_t uiLen, uint32_t *puiWritten) {
    *puiWritten = uiLen - (client().input.rarely() && uiLen > 0 ? 1 : 0);
    return writeLob(pStmt, uiPos, pText, uiLen);
}

uint32_t qdc_write_blob(void *pStmt, uint32_t uiPos, const void *pBytes, uint32_t uiLen) {
    return writeLob(pStmt, uiPos, pBytes, uiLen);
}

uint32_t qdc_write_batch_clob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pText, uint32_t uiLen,
                              uint32_t *puiWritten) {
    require(uiRow < of(pStmt).parameterRows, "a large object is written into a row of the set");
    *puiWritten = uiLen;
    return writeLob(pStmt, uiPos, pText, uiLen);
}

uint32_t qdc_write_batch_blob(void *pStmt, uint32_t uiPos, uint32_t uiRow, const void *pBytes, uint32_t uiLen) {
    require(uiRow < of(pStmt).parameterRows, "a large object is written into a row of the set");
    return writeLob(pStmt, uiPos, pBytes, uiLen);
}

uint32_t qdc_commit(void *) {
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_rollback(void *) {
    return client().fails() ? kFailed : 0;
}

uint32_t qdc_get_error(void *, uint32_t *puiCode, const char **ppcMessage) {
    Client &host = client();
    host.errorText = host.input.text(host.input.rarely() ? 2000 : 20);
    *puiCode = host.input.byte();
    *ppcMessage = host.input.rarely() ? nullptr : host.errorText.c_str();
    return host.fails() ? kFailed : 0;
}
}
