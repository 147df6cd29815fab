// What SQLite may do on behalf of a working copy's database, which somebody else may have made.
#pragma once

// From now on, in the whole process, SQLite opens as a database only what is a file itself, and
// removes nothing but a database's own journals. By itself it follows links, and a journal that was
// left behind may name another file, which is removed when the journal is rolled back. Subversion
// writes no such journals.
//
// Once, before the first database is opened.
void guardDatabaseFiles();

// The same; besides, a database has no views but Subversion's two, which read one table each, and
// no triggers, and its schema calls nothing that could have an effect. A view in place of a table
// might go on for ever. For those who only read: what changes a working copy needs triggers.
void guardDatabases();
