#pragma once

/// How many texts the SQLite driver has given to the engine to prepare since the program began. Counted in a program
/// with PreparedStatements.cpp among its sources.
int PreparedStatements();
