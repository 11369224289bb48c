// The embedded engine, for the suite and for the tests of what only a file can go through.
#pragma once

#include <sqlite3.h>

#include <memory>

#include "support/contract_test.h"

namespace contract {

class SqliteEngine : public Engine {
public:
    const char *name() const override { return "sqlite"; }
    const char *lacks(Feature feature) const override;
    std::string makeDatabase(const Home &home) override;
    Target target() const override { return {":", "", ""}; }
    const char *realType() const override { return "double"; }
    const char *blobType() const override { return "blob"; }
    std::vector<DeclaredType> declaredTypes() const override;
    std::vector<Expression> expressions() const override;
    std::vector<Misfit> misfits() const override;
};

// The database file past the client, as another program sees it.
class RawDatabase {
public:
    explicit RawDatabase(const std::filesystem::path &file);
    void run(const std::string &sql) const;
    // The first value of the first row.
    std::string value(const std::string &sql) const;

private:
    std::unique_ptr<sqlite3, int (*)(sqlite3 *)> database_;
};

} // namespace contract
