#include <memory>
#include <sqlite3.h>
#include <stdexcept>

#include "support/engine.h"

namespace database {

namespace {

constexpr char kFile[] = "../data/ormel.db";

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

// As patient as the library is.
Database open() {
    sqlite3 *db = nullptr;
    if (sqlite3_open(kFile, &db) != SQLITE_OK)
        throw std::runtime_error("run this program with tests/support/run_in_home.py: there is no database");
    sqlite3_busy_timeout(db, 5000);
    return {db, sqlite3_close};
}

int collect(void *texts, int, char **values, char **) {
    static_cast<std::vector<std::string> *>(texts)->emplace_back(values[0] != nullptr ? values[0] : "");
    return 0;
}

class SqliteEngine : public Engine {
public:
    const char *name() const override { return "sqlite"; }

    const char *lacks(Feature feature) const override {
        switch (feature) {
        case Feature::negativeZero:
            return "a zero loses its sign";
        case Feature::notANumber:
            return "NULL would be kept in the place of NaN, so that it is refused";
        case Feature::refusalAfterError:
            return "a transaction goes on after a failed statement";
        default:
            return nullptr;
        }
    }

    std::vector<std::string> run(const std::string &sql) const override {
        const Database db = open();
        std::vector<std::string> texts;
        if (sqlite3_exec(db.get(), sql.c_str(), collect, &texts, nullptr) != SQLITE_OK)
            throw std::runtime_error(sql + ": " + sqlite3_errmsg(db.get()));
        return texts;
    }

    std::string refusal(const std::string &place, Rule rule, const std::string &table,
                        const std::string &name) const override {
        switch (rule) {
        case Rule::key:
            return place + "UNIQUE constraint failed: " + table + "." + name;
        case Rule::presence:
            return place + "NOT NULL constraint failed: " + table + "." + name;
        case Rule::reference:
            return place + "FOREIGN KEY constraint failed";
        default:
            return place + "CHECK constraint failed: " + name;
        }
    }

    size_t copiesRead() const override { return 2; }
};

} // namespace

const Engine &sqliteEngine() {
    static const SqliteEngine engine;
    return engine;
}

} // namespace database
