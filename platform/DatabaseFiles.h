// Which files SQLite may touch on behalf of a database that somebody else may have made.
#pragma once

namespace platform {

// From now on, in the whole process, SQLite opens as a database only what is a file itself, and
// removes nothing but a database's own journals. By itself it follows links, and a journal that was
// left behind may name another file, which is removed when the journal is rolled back. Subversion
// writes no such journals.
//
// Once, before the first database is opened.
void guardDatabaseFiles();

}  // namespace platform
