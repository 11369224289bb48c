#include "home.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include "database.h"
#include "work.h"

namespace {

void write(const std::string &file, const std::string &text) {
    std::ofstream(file) << text;
}

// The tables: people is read, made is written to.
void makeTables() {
    bench::run(
        "CREATE TABLE people (" + bench::kPersonColumns + "); INSERT INTO people " + bench::persons(bench::kPeople) +
        "; CREATE TABLE made (id INTEGER, name VARCHAR(32), city VARCHAR(32), height DOUBLE PRECISION, born BIGINT,"
        " active BOOLEAN)");
}

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
    write(path_ + "/conf/db.conf", settings());
    write(path_ + "/conf/db.password", password() + "\n");
    chmod((path_ + "/conf/db.password").c_str(), 0600);
    if (chdir((path_ + "/bin").c_str()) != 0)
        die("the temporary folder cannot be entered");
    makeTables();
}

bench::Home::~Home() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}
