// The one table of what the library exports: how to run it, and what may come of a fault.
#ifndef FAULT_OPERATION_H
#define FAULT_OPERATION_H

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "scene.h"

namespace fault {

using Codes = std::set<uint32_t>;
using Names = std::set<std::string>;

inline constexpr uint32_t kStatus = unit::kClientStatus; // what the client answers where it fails

// The client's calls whose failure does not fail an operation, because nothing depends on them or because their
// status is not looked at. A column that was not described lacks its name, so that what names it is refused.
inline const Names kClosing = {"disconnect", "free_conn"};
inline const Names kFreeing = {"free_stmt"};
inline const Names kDescribing = {"desc_column_by_id"};
inline const Names kAffected = {"get_affected_rows"};
inline const Names kParameterRows = {"set_paramset_size"};
inline const Names kReading = {"get_affected_rows", "fetch", "get_column_by_id", "desc_column_by_id"};

inline Names operator+(Names a, const Names &b) {
    a.insert(b.begin(), b.end());
    return a;
}

// What some operations do after a failure that no other may do.
enum class Exception {
    none,
    commit,    // a begin that fails half way ends its transaction by a commit
    rows,      // the rows read before the columns' description failed are kept
    statement, // a statement over the catalogue that fails stays with its connection
    silence,   // a batch whose arrays cannot be had is answered as done, and its plain variant commits
    lobs,      // the slots of large objects are handed out by a failing call too
    exit,      // ends the process when the database stays away
};

struct Operation {
    std::string name = {};
    std::string form = {};     // where one function is run in several ways
    const char *safe = "";     // why it cannot fail, where it cannot
    unsigned needs = kNothing; // of its scene
    std::function<uint32_t(Scene &)> run = {};
    uint32_t success = ORMEL_OK;
    Codes client = {};      // the codes that failing calls of the client lead to, each of them
    Codes memory = {};      // and failing allocations
    Names tolerates = {};   // calls of the client that may fail unnoticed, each of them
    int forgives = 0;       // so many allocations may fail unnoticed
    bool describes = false; // asks for the descriptor of a table: runs with and without it in the cache
    bool consumes = false;  // its scene cannot be used again, whatever came of it
    Exception exception = Exception::none;
    std::function<void(Scene &)> undo = {};   // what Release does not know
    std::function<void(Scene &)> failed = {}; // expectations after a failure
};

using Operations = std::vector<Operation>;

// By family, in files of their own.
void AddConnections(Operations &all);
void AddStatements(Operations &all);
void AddFetches(Operations &all);
void AddResults(Operations &all);
void AddDescriptors(Operations &all);
void AddCache(Operations &all);
void AddTree(Operations &all);
void AddObjects(Operations &all);
void AddBatches(Operations &all);
void AddSlots(Operations &all);
void AddLifecycle(Operations &all);
void AddLog(Operations &all);
void AddWrites(Operations &all);
void AddSelects(Operations &all);
void AddCursors(Operations &all);

const Operations &AllOperations();

// Exported data: there is nothing to run.
const Names &ExportedData();

} // namespace fault

#endif
