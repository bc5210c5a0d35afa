// The layout of the history's database, an ordinary SQLite file. Programs of others may read it.
//
// application_id is kApplicationId, user_version the number of the layout. Texts are UTF-8, times are seconds
// since 1970 (UTC), numbers of kinds and forms are those of history/history.h and platform/change_recorder.h.
#pragma once

#include <array>

namespace permora {

inline constexpr int kApplicationId = 0x50726d48;  // "PrmH"

// What makes each layout of the one before; the first one of an empty file.
//
// changes      what the user did, one row each. `ended` is null as long as its program is at work, or when
//              that ended in the middle: `process` and `process_start` tell which. `undone`: 0 no, 1 whole,
//              2 in part. `undoes`: the change that this one took back, or 0. `objects`: the number of
//              records, when it has ended.
// tops         what the user named. `mark` knows the object again, for the layer that wrote it.
// folders      on the way to changed objects. `above` is a smaller number, or 0 for a top, which has the name
//              ''. A folder may have several rows.
// descriptors  what was there or is there, each once. `owner` is the host's, where there is one beside the
//              descriptor's. `hash` finds equal ones and tells damage: history/stored_rows.h.
// uses         which changes refer to a descriptor.
// objects      one row for each time that an object was about to be written, in that order. The object is the
//              entry `name` of `folder`, or with the name '' the top itself.
// times        when records were made: `time` is that of the record `number` and of those after it, up to the
//              next row. Those before the first row were made when the change began, and so count all
//              records of a change that was made in the first layout.
//
// A `seal` is made of the other columns of its row, in their order (history/stored_rows.h). The pages of
// SQLite have no checksum, and a row that has changed by itself must not lead to a wrong list on an object.
inline constexpr std::array kSchemaSteps = {R"(
CREATE TABLE changes(
    number INTEGER PRIMARY KEY AUTOINCREMENT, began INTEGER NOT NULL, ended INTEGER, user TEXT NOT NULL,
    kind INTEGER NOT NULL, undone INTEGER NOT NULL DEFAULT 0, undoes INTEGER NOT NULL, objects INTEGER NOT NULL DEFAULT 0,
    process INTEGER NOT NULL, process_start INTEGER NOT NULL);
CREATE TABLE tops(
    change INTEGER NOT NULL, number INTEGER NOT NULL, path TEXT NOT NULL, is_folder INTEGER NOT NULL,
    mark BLOB NOT NULL, seal INTEGER NOT NULL, PRIMARY KEY(change, number)) WITHOUT ROWID;
CREATE TABLE folders(
    change INTEGER NOT NULL, number INTEGER NOT NULL, top INTEGER NOT NULL, above INTEGER NOT NULL,
    name TEXT NOT NULL, seal INTEGER NOT NULL, PRIMARY KEY(change, number)) WITHOUT ROWID;
CREATE TABLE descriptors(
    number INTEGER PRIMARY KEY, hash INTEGER NOT NULL, form INTEGER NOT NULL, owner INTEGER, bytes BLOB NOT NULL);
CREATE INDEX descriptors_by_hash ON descriptors(hash);
CREATE TABLE uses(
    descriptor INTEGER NOT NULL, change INTEGER NOT NULL, PRIMARY KEY(descriptor, change)) WITHOUT ROWID;
CREATE TABLE objects(
    change INTEGER NOT NULL, number INTEGER NOT NULL, folder INTEGER NOT NULL, name TEXT NOT NULL,
    is_folder INTEGER NOT NULL, file INTEGER NOT NULL, before INTEGER NOT NULL, after INTEGER NOT NULL,
    seal INTEGER NOT NULL, PRIMARY KEY(change, number)) WITHOUT ROWID;
)",
                                            R"(
CREATE TABLE times(
    change INTEGER NOT NULL, number INTEGER NOT NULL, time INTEGER NOT NULL, seal INTEGER NOT NULL,
    PRIMARY KEY(change, number)) WITHOUT ROWID;
)"};
inline constexpr int kSchemaVersion = static_cast<int>(kSchemaSteps.size());

}  // namespace permora
