#include "operation.h"

namespace fault {

const Operations &AllOperations() {
    static const Operations all = [] {
        Operations made;
        for (auto add : {AddConnections, AddStatements, AddFetches, AddResults, AddDescriptors, AddCache, AddTree,
                         AddObjects, AddBatches, AddSlots, AddLifecycle, AddLog, AddWrites, AddSelects, AddCursors}) {
            add(made);
        }
        return made;
    }();
    return all;
}

const Names &ExportedData() {
    static const Names data = {"g_VemloLogLevel",     "g_acVemloLogFileName", "g_apcLogLeveNameMap", "g_pstResAtt",
                               "g_pstVemloLogHandle", "g_stLogCfgs",          "g_stTransMgr"};
    return data;
}

} // namespace fault
