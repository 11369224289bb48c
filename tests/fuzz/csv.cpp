// CSV files loaded into any table: the command's reader, its conversion of values, and the library's batches.
#include <iostream>
#include <sstream>

#include "cli/commands.h"
#include "cli/csv_reader.h"
#include "cli/error.h"
#include "ormeldb/platform/decrypt.h"
#include "support/client.h"
#include "support/heap.h"
#include "support/home.h"
#include "support/input.h"
#include "support/platform.h"

namespace {

using namespace fuzz;

constexpr char kFile[] = "x.csv";
constexpr char kSeparators[] = {',', ';', '\t', '|', ' '};

// Standard output and error go nowhere meanwhile.
class Quiet {
public:
    Quiet() : out_(std::cout.rdbuf(sink_.rdbuf())), err_(std::cerr.rdbuf(sink_.rdbuf())) {}
    ~Quiet() {
        std::cout.rdbuf(out_);
        std::cerr.rdbuf(err_);
    }
    Quiet(const Quiet &) = delete;
    Quiet &operator=(const Quiet &) = delete;

private:
    std::ostringstream sink_;
    std::streambuf *out_;
    std::streambuf *err_;
};

// How many records the reader finds, if it can read the file.
uint64_t records(char separator, bool blankLines) {
    cli::CsvReader reader(kFile, kFile, separator);
    if (blankLines)
        reader.takeBlankLines();
    cli::CsvRecord record{};
    uint64_t count = 0;
    uint64_t line = 0;
    while (reader.next(record)) {
        ++count;
        require(record.line >= line, "records come in the order of their lines");
        line = record.line;
    }
    require(reader.read() == reader.size(), "the whole file is read");
    return count;
}

void load(Client &client, const cli::LoadRequest &request, char separator) {
    try {
        cli::loadFile(request, {});
    } catch (const cli::Failure &) {
        return;
    }
    const uint64_t skipped = request.skip ? std::stoull(*request.skip) : 0;
    const uint64_t count = records(separator, client.table.size() == 1);
    require(client.rowsBound + skipped == count, "what was loaded are the file's records");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const Home home;
    static const bool configured = (Home::write("../conf/db.conf", "db.dbname=x\n"), true);
    g_decrypt_info_s[ORMEL_DECRYPT_PASSWORD_OFFSET] = 'x';
    Input input(data, size);
    logEverything(configured && input.upTo(15) == 1);
    const Heap heap;
    Client client(input, tableOf(input, 6));
    client.mayFail = input.rarely();
    const char separator = input.oneOf(kSeparators);
    cli::LoadRequest request = {"t", kFile, separator == '\t' ? "\\t" : std::string(1, separator), {}, {}, {}};
    if (input.rarely())
        request.skip = std::to_string(input.upTo(3));
    if (input.rarely())
        request.commitEvery = std::to_string(1 + input.upTo(3));
    if (input.rarely())
        request.batch = std::to_string(1 + input.upTo(3));
    Home::write(kFile, input.rest());
    const Quiet quiet;
    load(client, request, separator);
    return 0;
}
