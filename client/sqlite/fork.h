// SQLite in children of fork.
//
// SQLite holds the locks of a file for the whole process, and finds its note of which they are by the file's device and
// number. A child inherits the note, but no lock: its own connections would wait for what nobody there gives back, and
// take for locked what another process may lock. So every file has another device in each child, for SQLite alone.
#pragma once

namespace ormel::client::sqlite {

// From now on, in all children of this process.
void separateChildren() noexcept;

} // namespace ormel::client::sqlite
