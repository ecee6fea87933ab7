#pragma once

namespace standin {

class Database;

// Makes the tables and the ready-made accounts of a new store; an existing one must be of this version.
void makeSchema(Database& database);

} // namespace standin
