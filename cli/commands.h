// The commands. Each does its work and prints its result, or throws UsageError or Failure.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "home.h"

namespace cli {

struct HomeRequest {
    std::string directory;
    std::string passwordFile; // empty: ask on the terminal
    std::string engine = "sqlite";
    std::optional<std::string> host; // these of a server alone
    std::optional<std::string> port;
    std::optional<std::string> dbname;
    std::optional<std::string> user;
    std::optional<std::string> sslMode;
    std::optional<std::string> sslRootCert;
};

// Makes a home.
void makeHome(const HomeRequest &request);

// Connects, and prints what the database is and what it could not be asked.
void checkDatabase();

// Runs one SQL statement and commits it; prints its rows, or how many it affected.
void runSql(const std::string &text);

// Prints the columns of a table and its record length.
void describeTable(const std::string &table);

struct LoadRequest {
    std::string table;
    std::string file;
    std::string separator = ",";
    std::optional<std::string> batch;       // rows of a statement
    std::optional<std::string> commitEvery; // rows of a transaction; none: all of them
    std::optional<std::string> skip;        // records of the file to be passed over
};

// Inserts the records of a CSV file: all or none, or all up to the last commit before a failure.
void loadFile(const LoadRequest &request, const Place &place);

// Prints how many records meet all conditions.
void countRecords(const std::string &table, const std::vector<std::string> &where);

// Prints the records that meet all conditions, PREFETCH_ROWS at most.
void showRecords(const std::string &table, const std::vector<std::string> &where);

struct SelectRequest {
    std::string table;
    std::vector<std::string> where;
    std::optional<std::string> fields; // names with commas between them; none: all columns
    std::optional<std::string> limit;
    std::optional<std::string> offset;
    bool json = false;
    bool csv = false;
    std::optional<std::string> lob; // the column of which one value is written as it stands
};

// Prints the rows that meet all conditions, with their NULLs and large objects; takes all of them into memory first.
void getRows(const SelectRequest &request);

// The same row by row, as CSV or as a JSON object a line.
void dumpRows(const SelectRequest &request);

struct ChangeRequest {
    std::string table;
    std::vector<std::string> assignments; // of an update or a new row
    std::vector<std::string> files;       // COL=FILE of a new row
    std::vector<std::string> where;
    bool all = false; // every record is meant; needed where there are no conditions
};

// Delete or update the records that meet all conditions.
void deleteRecords(const ChangeRequest &request);
void updateRecords(const ChangeRequest &request);

// Inserts a row of the values that are given, in words and in files.
void putRow(const ChangeRequest &request, const Place &place);

// Updates the rows that meet all conditions, also with NULL and large objects.
void setRows(const ChangeRequest &request);

} // namespace cli
