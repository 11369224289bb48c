#include "sqlite/sqlite_engine.h"

namespace contract {

CONTRACT_ENGINE(SqliteEngine);

const char *SqliteEngine::lacks(Feature feature) const {
    switch (feature) {
    case Feature::enforcedWidths:
        return "the widths of columns are not enforced";
    case Feature::exactNumeric:
        return "NUMERIC columns keep 15 digits";
    case Feature::negativeZero:
        return "a zero has no sign";
    case Feature::caseSensitiveNames:
        return "every name is found whatever its case";
    case Feature::paddedChar:
        return "CHAR is not padded";
    case Feature::refusalAfterError:
        return "a transaction goes on after a failed statement";
    case Feature::sqlState:
        return "there is no SQLSTATE";
    case Feature::fixedBytes:
    case Feature::misfits:
    case Feature::knownNotNull:
    case Feature::workAfterError:
        return nullptr;
    }
    return nullptr;
}

std::string SqliteEngine::makeDatabase(const Home & /*home*/) {
    return "db.dbname=../data/contract.db\n";
}

std::vector<DeclaredType> SqliteEngine::declaredTypes() const {
    return {
        {"tinyint", kInteger, 4, 10},
        {"smallint", kInteger, 4, 10},
        {"mediumint", kInteger, 4, 10},
        {"int", kInteger, 4, 10},
        {"INTEGER", kInteger, 4, 10},
        {"int2", kInteger, 4, 10},
        {"int4", kInteger, 4, 10},
        {"boolean", kBoolean, 4},
        {"BOOL", kBoolean, 4},
        {"bigint", kBigint, 8, 19},
        {"int8", kBigint, 8, 19},
        {"real", kReal, 8},
        {"double", kReal, 8},
        {"double precision", kReal, 8},
        {"float", kReal, 8},
        {"char(1)", kChar, 5},
        {"char(20)", kChar, 81},
        {"character(20)", kChar, 81},
        {"nchar(20)", kChar, 81},
        {"CHAR ( 16383 )", kChar, 65533},
        {"char(16384)", kClob, 44},
        {"varchar(1)", kVarchar, 5},
        {"varchar(20)", kVarchar, 81},
        {"character varying(20)", kVarchar, 81},
        {"varying character(20)", kVarchar, 81},
        {"nvarchar(20)", kVarchar, 81},
        {"varchar(16383)", kVarchar, 65533},
        {"varchar(16384)", kClob, 44},
        {"varchar(100000000000)", kClob, 44},
        {"varchar", kClob, 44},
        {"numeric", kText, 512},
        {"decimal", kText, 512},
        {"numeric(10)", kText, 14, 10},
        {"numeric(10,2)", kText, 14, 10, 2},
        {"DECIMAL( 5 , 4 )", kText, 9, 5, 4},
        {"numeric(200,100)", kText, 204, 200, 100},
        {"date", kText, 36},
        {"time", kText, 36},
        {"datetime", kText, 36},
        {"timestamp", kText, 36},
        {"uuid", kText, 37},
        {"binary(16)", kBinary, 16},
        {"binary(65534)", kBinary, 65534},
        {"binary(65535)", kBlob, 44},
        {"varbinary(300)", kVarbinary, 300},
        {"varbinary(65534)", kVarbinary, 65534},
        {"varbinary(65535)", kBlob, 44},
        {"text", kClob, 44},
        {"clob", kClob, 44},
        {"json", kClob, 44},
        {"", kClob, 44},
        {"blob", kBlob, 44},
    };
}

std::vector<Expression> SqliteEngine::expressions() const {
    return {
        {"1 + id", kBigint},    {"count(*)", kBigint},  {"max(id)", kBigint},        {"id * 1.5", kReal},
        {"avg(id)", kReal},     {"'x' || v", kClob},    {"cast(id as text)", kClob}, {"x'00ff'", kBlob},
        {"zeroblob(3)", kBlob}, {"length(v)", kBigint},
    };
}

std::vector<Misfit> SqliteEngine::misfits() const {
    return {
        {"integer", "'text'"}, {"integer", "2147483648"}, {"integer", "-2147483649"}, {"integer", "1.5"},
        {"smallint", "'1x'"},  {"integer", "x'01'"},      {"bigint", "'text'"},       {"bigint", "1.5"},
        {"bigint", "9.3e18"},  {"boolean", "2"},          {"boolean", "-1"},          {"boolean", "'true'"},
        {"double", "'text'"},  {"double", "x'00'"},
    };
}

RawDatabase::RawDatabase(const std::filesystem::path &file) : database_(nullptr, sqlite3_close) {
    sqlite3 *raw = nullptr;
    // An absolute path is never taken for more than a file's name.
    const int result = sqlite3_open(std::filesystem::absolute(file).c_str(), &raw);
    database_.reset(raw);
    if (result != SQLITE_OK)
        throw ClientError("raw open of " + file.string());
}

void RawDatabase::run(const std::string &sql) const {
    if (sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw ClientError(sql + ": " + sqlite3_errmsg(database_.get()));
}

std::string RawDatabase::value(const std::string &sql) const {
    sqlite3_stmt *raw = nullptr;
    sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &raw, nullptr);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(raw, sqlite3_finalize);
    if (raw == nullptr || sqlite3_step(raw) != SQLITE_ROW)
        throw ClientError(sql + ": " + sqlite3_errmsg(database_.get()));
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(raw, 0));
    return text != nullptr ? text : "NULL";
}

} // namespace contract
