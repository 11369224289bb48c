#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <limits>
#include <memory>

#include <sys/stat.h>

#include "commands.h"
#include "object.h"
#include "text.h"

namespace cli {
namespace {

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

struct ColumnFile {
    std::string column;
    std::string file;
};

ColumnFile parseColumnFile(const std::string &text) {
    const size_t equals = text.find('=');
    const std::string column(trimmed(std::string_view(text).substr(0, equals)));
    if (equals == std::string::npos || column.empty() || equals + 1 == text.size())
        throw UsageError("--lob takes a column and a file, COL=FILE, not '" + text + "'");
    return {column, text.substr(equals + 1)};
}

// Every column is named once, in words or in a file.
void checkColumns(const Layout &layout, const std::vector<Assignment> &assignments,
                  const std::vector<ColumnFile> &files) {
    std::vector<std::string> names;
    for (const Assignment &assignment : assignments)
        names.push_back(assignment.column);
    for (const ColumnFile &file : files)
        names.push_back(file.column);
    layout.positions(names);
}

// Whole, and in one block where the file tells its size: large values are what it is for.
std::string contentOf(const std::string &path, const std::string &name) {
    constexpr size_t kMost = std::numeric_limits<int32_t>::max();
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "re"));
    if (file == nullptr)
        throw Failure("cannot read " + name + ": " + std::strerror(errno));
    std::string content;
    struct stat status {};
    if (fstat(fileno(file.get()), &status) == 0 && S_ISREG(status.st_mode))
        content.reserve(std::min(static_cast<size_t>(status.st_size), kMost) + 1);
    std::array<char, 65536> part{};
    for (size_t got = 0; (got = std::fread(part.data(), 1, part.size(), file.get())) > 0;) {
        content.append(part.data(), got);
        if (content.size() > kMost)
            throw Failure(name + " has more than the " + std::to_string(kMost) + " bytes that one value takes");
    }
    if (std::ferror(file.get()) != 0)
        throw Failure("cannot read " + name + ": " + std::strerror(errno));
    return content;
}

} // namespace

void putRow(const ChangeRequest &request, const Place &place) {
    checkTableName(request.table);
    const size_t count = request.assignments.size() + request.files.size();
    if (count == 0)
        throw UsageError("COL=VALUE is required, or --lob COL=FILE");
    if (count > ORMEL_MAX_ITEMS)
        throw UsageError("a row is put with at most 32 values; use the command sql for more");
    const auto assignments = parseAssignments(request.assignments);
    std::vector<ColumnFile> files;
    for (const std::string &text : request.files)
        files.push_back(parseColumnFile(text));
    Session session;
    const Layout layout(session, request.table);
    checkColumns(layout, assignments, files);
    Object row(layout);
    row.assign(assignments);
    for (const ColumnFile &file : files)
        row.assignBytes(file.column, contentOf(callersFile(place, file.file), file.file));
    if (ORMEL_InsertRecForConn2(session.connection(), row.get()) != ORMEL_OK)
        throw databaseFailure("cannot put the row into " + request.table);
    session.commit();
    std::cout << "1 row put\n";
}

} // namespace cli
