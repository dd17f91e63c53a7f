#pragma once

// The two failures that the store lets through to its callers, named here so that the
// measurement loop can tell them apart without including libpqxx itself:
// - pqxx::sql_error: the server rejected a statement; the same statement will be rejected
//   again, so the measurement row is skipped;
// - pqxx::broken_connection: the server is gone; the row is tried again after a reconnect.
#include <pqxx/except>
