#pragma once

#include <chrono>
#include <string>

// Clock texts for file names, statements and comparisons. Every field is plain decimal
// without leading zeros ("2023-7-4 9:5:1"): PostgreSQL's TO_TIMESTAMP reads the short
// fields, and log file names of running installations already carry this form.

// Current time as text. An empty `offset` means the host's local time; otherwise `offset`
// is "[+-]H:MM" and the result is UTC shifted by it ("+0:00" is UTC). `flag` 1 gives
// "Y-M-D-h-m-s" (file names), `flag` 2 gives "Y-M-D h:m:s" (statements), any other flag
// the date "Y-M-D" alone. Throws std::invalid_argument for an offset that is no number.
std::string time_now(int flag, std::string offset);

// Current UTC time as text, by the same flag rule.
std::string time_now(int flag);

// Seconds since the epoch as UTC text in the "Y-M-D h:m:s" form.
std::string sec_to_string(long seconds);

// Parses `text` with strptime and `format` into zeroed fields and returns mktime of them:
// the text is read as local time whatever it meant, so only differences of two such values
// are meaningful. A text that does not fit keeps the fields parsed so far; nothing throws.
long stringToSec(const std::string& text, const std::string& format);

// Reads the dates of a history, "Y-M-D h:m:s" with anything after the seconds, into the
// numbers stringToSec gives them with the format "%Y-%m-%d %H:%M:%S", at a fraction of the
// cost: the fields are read by hand and the C library is asked for the zone's offset twice
// per calendar day (its first and last second) instead of once per date. A day on which the
// offset is not the same at both ends and a text of any other shape go through stringToSec.
// One reader serves one batch of dates; it keeps the offset of the day it saw last, so a zone
// changed under it is not seen until it moves to another day.
class LocalDateReader {
public:
  long seconds(const std::string& text);

private:
  long day = 0;
  long offset = 0; // mktime's answer less the date's seconds counted as if in UTC
  bool known = false;
  bool steady = false;
};

// Parses "%Y-%m-%d %H:%M:%S" as local time; fractions of a second are ignored and an
// unparsable text gives the time of the zeroed fields.
std::chrono::system_clock::time_point stringToDateTime(std::string text);
