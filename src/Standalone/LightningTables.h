// What makes Thunderbird's tables look like those of old.
#pragma once

#include "Standalone/LightningRegistry.h"
#include "Standalone/Sqlite.h"

namespace vorlent {

// Puts the tables of old, as views with triggers, in front of Thunderbird's for this connection alone. A
// registry without calendars stands for all that the rows name.
void AddTablesOfOld(SqliteDatabase& database, const LightningRegistry& registry);

// Does to Thunderbird's tables what statements have done to the tables of old.
void ApplyToThunderbirdsTables(SqliteDatabase& database);

}  // namespace vorlent
