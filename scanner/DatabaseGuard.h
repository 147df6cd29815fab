// What SQLite may do on behalf of a working copy's database, which somebody else may have made.
#pragma once

// From now on, in the whole process, SQLite keeps to what `platform::guardDatabaseFiles` says; and
// a database has no views but Subversion's two, which read one table each, and no triggers, and its
// schema calls nothing that could have an effect. A view in place of a table might go on for ever.
// For those who only read: what changes a working copy needs triggers.
//
// Once, before the first database is opened.
void guardDatabases();
