// The one quoting of texts placed into statements, for the store and for the measurement
// object, which builds a few statements of its own.
#pragma once

#include <string>

namespace sql {

// The text between single quotes with every quote inside doubled, so that an alias, a name or
// a code holding a quote is stored and compared as it is instead of ending the literal early.
// For a text without a quote this is exactly "'" + text + "'".
std::string quoted(const std::string& text);

} // namespace sql
