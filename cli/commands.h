// The commands. Each does its work and prints its result, or throws UsageError or Failure.
#pragma once

#include <string>
#include <vector>

#include "home.h"

namespace cli {

// Makes a home; an empty passwordFile means to ask on the terminal.
void makeHome(const std::string &directory, const std::string &passwordFile);

// Runs one SQL statement and commits it; prints its rows, or how many it affected.
void runSql(const std::string &text);

// Prints the columns of a table and its record length.
void describeTable(const std::string &table);

struct LoadRequest {
    std::string table;
    std::string file;
    std::string separator = ",";
};

// Inserts every record of a CSV file, or none.
void loadFile(const LoadRequest &request, const Place &place);

// Prints how many records meet all conditions.
void countRecords(const std::string &table, const std::vector<std::string> &where);

// Prints the records that meet all conditions, PREFETCH_ROWS at most.
void showRecords(const std::string &table, const std::vector<std::string> &where);

struct ChangeRequest {
    std::string table;
    std::vector<std::string> assignments; // of an update
    std::vector<std::string> where;
    bool all = false; // every record is meant; needed where there are no conditions
};

// Delete or update the records that meet all conditions.
void deleteRecords(const ChangeRequest &request);
void updateRecords(const ChangeRequest &request);

} // namespace cli
