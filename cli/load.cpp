#include <algorithm>
#include <iostream>

#include "batch.h"
#include "commands.h"
#include "csv_reader.h"
#include "layout.h"
#include "option.h"
#include "progress.h"
#include "text.h"

namespace cli {
namespace {

constexpr size_t kBatch = 1000; // rows of a batch where nothing is said

char separatorOf(const std::string &text) {
    if (text == "\\t")
        return '\t';
    if (text.size() != 1 || std::string("\"\r\n").find(text) != std::string::npos)
        throw UsageError("the separator '" + printable(text) +
                         "' is not one character of ASCII (\\t for the tab) other than a quote or a line end");
    return text[0];
}

// The options, understood as far as that needs no database.
struct Plan {
    explicit Plan(const LoadRequest &request)
        : separator(separatorOf(request.separator)), skip(parseCount("--skip", request.skip.value_or("0"), 0)),
          commitEvery(request.commitEvery ? parseCount("--commit-every", *request.commitEvery, 1) : kNoMost) {
        if (request.batch)
            batch = parseCount("--batch", *request.batch, 1);
    }

    char separator;
    uint64_t skip;
    uint64_t commitEvery;
    std::optional<uint64_t> batch;
};

// Said before the first row, not as a failure of it.
void checkInsertable(const Layout &layout) {
    const size_t count = layout.columns().size();
    if (count > ORMEL_MAX_ITEMS)
        throw Failure(layout.table() + " has " + std::to_string(count) +
                      " columns, the insert of a record takes at most 32; use the command sql, or split the table");
}

uint64_t batchOf(const Plan &plan, const Layout &layout) {
    const uint64_t most = Batch::most(layout);
    if (plan.batch && *plan.batch > most)
        throw UsageError("--batch takes at most " + std::to_string(most) + " rows of " + layout.table() +
                         ", because the library counts the bytes of a batch in 32 bits");
    return std::min<uint64_t>(plan.batch.value_or(kBatch), most);
}

// A file on its way into a table.
class Load {
public:
    Load(CsvReader &reader, const Layout &layout, const Plan &plan)
        : reader_(reader), layout_(layout), plan_(plan), batch_(batchOf(plan, layout)) {
        if (layout.columns().size() == 1)
            reader.takeBlankLines();
    }

    // Every failure says what remains of the load and how to go on.
    void run() {
        try {
            skip();
            Progress progress(reader_.size(), reader_.read());
            while (transact(progress))
                ;
        } catch (const std::exception &failure) {
            throw Failure(failure.what() + fate());
        }
    }

    // Records that the database took, and the rows that it counts for them: triggers may make these fewer.
    uint64_t taken() const { return taken_; }
    uint64_t loaded() const { return loaded_; }

private:
    std::string fate() const {
        if (committing_ > 0 && isOutcomeUnknown())
            return "; whether the commit of the last " + rows(committing_) +
                   " happened is not known: look before going on with --skip " + std::to_string(plan_.skip + taken_) +
                   " or --skip " + std::to_string(plan_.skip + taken_ + committing_);
        if (taken_ == 0)
            return "; nothing was loaded";
        return "; loaded and kept: " + rows(loaded_) + "; when that is mended, go on with --skip " +
               std::to_string(plan_.skip + taken_);
    }

    void skip() {
        CsvRecord record;
        for (uint64_t i = 0; i < plan_.skip; ++i)
            if (!reader_.next(record))
                throw Failure("the file has only " + counted(i, "record") + ", and --skip passes over " +
                              std::to_string(plan_.skip));
    }

    // Inserts the rows up to the next commit; false at the end of the file.
    bool transact(Progress &progress) {
        Transaction transaction;
        uint64_t taken = 0;
        uint64_t loaded = 0;
        bool more = true;
        while (more && taken < plan_.commitEvery) {
            Batch batch(layout_, std::min(batch_, plan_.commitEvery - taken));
            more = fill(batch);
            if (batch.size() > 0)
                loaded += insert(batch, transaction);
            taken += batch.size();
            progress.show(reader_.read(), taken_ + taken);
        }
        committing_ = taken;
        transaction.commit();
        committing_ = 0;
        taken_ += taken;
        loaded_ += loaded;
        return more;
    }

    // False where the file has no more records.
    bool fill(Batch &batch) {
        CsvRecord record;
        lines_.clear();
        while (!batch.full()) {
            if (!reader_.next(record))
                return false;
            lines_.push_back(record.line);
            add(batch, record);
        }
        return true;
    }

    void add(Batch &batch, const CsvRecord &record) const {
        const std::string place = reader_.place(record.line);
        const size_t count = layout_.columns().size();
        if (record.fields.size() != count)
            throw Failure(place + ": the line has " + counted(record.fields.size(), "field") + ", " + layout_.table() +
                          " has " + counted(count, "column"));
        try {
            batch.add(record.fields);
        } catch (const Failure &failure) {
            throw Failure(place + ": " + failure.what());
        }
    }

    size_t insert(Batch &batch, const Transaction &transaction) const {
        if (const auto loaded = batch.insert(transaction.slot()->pConn))
            return *loaded;
        std::string words = lastError().acText;
        if (const auto row = takeRow(words, lines_.size()))
            throw failureInWords(reader_.place(lines_[*row]) + ": the database refuses the record", words);
        throw failureInWords(reader_.place(lines_.front()) + " to " + std::to_string(lines_.back()) +
                                 ": the database refuses the records",
                             words);
    }

    CsvReader &reader_;
    const Layout &layout_;
    const Plan &plan_;
    uint64_t batch_;              // rows of a batch
    std::vector<uint64_t> lines_; // of the batch's records
    uint64_t taken_ = 0;          // counted at the commit, as are the rows
    uint64_t loaded_ = 0;
    uint64_t committing_ = 0; // records that a commit is under way for
};

} // namespace

void loadFile(const LoadRequest &request, const Place &place) {
    checkTableName(request.table);
    const Plan plan(request);
    CsvReader reader(callersFile(place, request.file), request.file, plan.separator);
    const Session session;
    const Layout layout(session, request.table);
    checkInsertable(layout);
    Load load(reader, layout, plan);
    load.run();
    std::cout << rows(load.loaded()) << " loaded into " << request.table << '\n';
    if (load.loaded() != load.taken())
        std::cerr << "ormel: the file has " << rows(load.taken())
                  << ": a trigger of the database kept the others out, or put them elsewhere\n";
}

} // namespace cli
