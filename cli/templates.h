// The files that a new home begins with. The library skips lines whose text before "=" is none of its keys.
#pragma once

namespace cli {

constexpr const char *kDbConfTemplate =
    R"(# Where the database is. One key=value a line: no blank before "=", a value ends at the next "=".
# Paths are relative to the directory that the process runs in, bin/ of this home.

# The database engine: sqlite is embedded, it keeps everything in one file and needs no server.
db.driver=sqlite

# The database: for sqlite its file, for a server the name of a database.
db.dbname=../data/ormel.db

# The server's host and port; sqlite ignores them.
db.host=
db.port=

# The user of the database; sqlite ignores it. The password stands in db.password beside this file, never here.
db.user=

# Encryption of connections to a server: DISABLED, PREFERRED, REQUIRED, VERIFY_CA or VERIFY_FULL.
auth.sslmode=DISABLED

# The certificate authority that the server's certificate is checked against.
auth.sslrootcert=

# This client's own certificate and its key.
auth.sslcert=
auth.sslkey=

# Idle connections that a process keeps for its next connect with the same settings, a minute at most; 0 keeps none.
client.pool=8

# Milliseconds that one connect to a server may take.
client.connect_timeout_ms=2000

# Milliseconds that a statement waits for another process that is writing.
client.busy_timeout_ms=5000
)";

constexpr const char *kLogConfTemplate = R"(# How the processes of this home log. One key=value a line.

# The directory of the log files, relative to bin/ of this home.
log.path=../var/log

# The number of a server's log file, slot-<number>. Every process that runs at the same time takes one of its own; the
# command ormel always takes 900.
log.slot=0

# Lines below this level are not written: 0 TRACE, 1 DEBUG, 2 INFO, 5 ERROR, 6 FATAL.
OPB_VEMLO_DEBUG=2
)";

} // namespace cli
