// What makes Thunderbird's tables look like those of old.
#pragma once

#include "Standalone/LightningNames.h"
#include "Standalone/LightningRegistry.h"
#include "Standalone/Sqlite.h"

namespace vorlent {

// Puts the tables of old, as views with triggers, in front of Thunderbird's for this connection alone. A
// registry without calendars stands for all that the rows name. Items have the names in place of their IDs.
void AddTablesOfOld(SqliteDatabase& database, const LightningRegistry& registry, LightningNames& names);

// Does to Thunderbird's tables what statements have done to the tables of old.
void ApplyToThunderbirdsTables(SqliteDatabase& database);

}  // namespace vorlent
