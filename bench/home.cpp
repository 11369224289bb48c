#include "home.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include "raw.h"

namespace {

void write(const std::string &file, const char *text) {
    std::ofstream(file) << text;
}

// The tables: people is read, made is written to.
constexpr char kTables[] = R"(
    CREATE TABLE people (id INTEGER PRIMARY KEY, name VARCHAR(32), city VARCHAR(32), height DOUBLE, born BIGINT,
                         active BOOLEAN);
    CREATE TABLE made (id INTEGER, name VARCHAR(32), city VARCHAR(32), height DOUBLE, born BIGINT, active BOOLEAN);
    WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < 10000)
    INSERT INTO people SELECT i, 'name ' || i, 'city ' || (i % 100), i * 0.5, i * 1000000000, i % 2 FROM n;
)";
static_assert(bench::kPeople == 10000, "as the statement above has it");

} // namespace

void bench::die(const std::string &why) {
    std::fprintf(stderr, "ormel_bench: %s\n", why.c_str());
    std::exit(1);
}

bench::Home::Home() {
    std::string pattern = (std::filesystem::temp_directory_path() / "ormel-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        die("no temporary folder can be made");
    path_ = pattern;
    for (const char *folder : {"bin", "conf", "data", "var"})
        std::filesystem::create_directory(path_ + "/" + folder);
    write(path_ + "/conf/db.conf", "db.driver=sqlite\n");
    write(path_ + "/conf/db.password", "none\n");
    chmod((path_ + "/conf/db.password").c_str(), 0600);
    if (chdir((path_ + "/bin").c_str()) != 0)
        die("the temporary folder cannot be entered");
    run(openDatabase().get(), kTables);
}

bench::Home::~Home() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}
