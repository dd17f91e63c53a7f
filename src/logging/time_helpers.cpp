#include "logging/time_helpers.h"

#include <ctime>
#include <iomanip>
#include <sstream>

namespace {

std::string formatTime(const std::tm& t, int flag) {
  std::string text = std::to_string(t.tm_year + 1900) + "-" + std::to_string(t.tm_mon + 1) + "-" +
                     std::to_string(t.tm_mday);
  if (flag == 1) {
    text += "-" + std::to_string(t.tm_hour) + "-" + std::to_string(t.tm_min) + "-" +
            std::to_string(t.tm_sec);
  } else if (flag == 2) {
    text += " " + std::to_string(t.tm_hour) + ":" + std::to_string(t.tm_min) + ":" +
            std::to_string(t.tm_sec);
  }
  return text;
}

} // namespace

std::string time_now(int flag, std::string offset) {
  int hours = 0;
  int minutes = 0;
  if (!offset.empty()) {
    // The minutes take the sign of the whole offset, so "-2:15" is two hours and a quarter
    // behind UTC and not one and three quarters.
    const std::string::size_type colon = offset.rfind(':');
    const std::string minutes_text = offset.substr(0, 1) + offset.substr(colon + 1);
    const std::string hours_text = offset.substr(0, colon);
    minutes = std::stoi(minutes_text, nullptr, 10);
    hours = std::stoi(hours_text, nullptr, 10);
  }
  std::time_t now = std::time(nullptr);
  // The reentrant forms: the loop and a recalculation job take the time at once, and the C
  // library's one shared result would let one thread's text carry the other's fields.
  std::tm broken{};
  if (offset.empty()) {
    localtime_r(&now, &broken);
  } else {
    now += static_cast<std::time_t>(hours) * 3600 + static_cast<std::time_t>(minutes) * 60;
    gmtime_r(&now, &broken);
  }
  return formatTime(broken, flag);
}

std::string time_now(int flag) {
  const std::time_t now = std::time(nullptr);
  std::tm broken{};
  gmtime_r(&now, &broken);
  return formatTime(broken, flag);
}

std::string sec_to_string(long seconds) {
  const std::time_t value = static_cast<std::time_t>(seconds);
  std::tm broken{};
  gmtime_r(&value, &broken);
  return formatTime(broken, 2);
}

long stringToSec(const std::string& text, const std::string& format) {
  std::tm broken{};
  strptime(text.c_str(), format.c_str(), &broken);
  return static_cast<long>(std::mktime(&broken));
}

namespace {

const char* const kDateFormat = "%Y-%m-%d %H:%M:%S";
constexpr long kSecondsPerDay = 86400;

// Reads one to `widest` decimal digits at `at` into `value`, which must lie in [low, high].
bool readField(const char*& at, const char* end, int widest, int low, int high, int& value) {
  int digits = 0;
  value = 0;
  while (at != end && digits < widest && *at >= '0' && *at <= '9') {
    value = value * 10 + (*at - '0');
    ++at;
    ++digits;
  }
  return digits > 0 && value >= low && value <= high;
}

bool readSeparator(const char*& at, const char* end, char separator) {
  if (at == end || *at != separator) {
    return false;
  }
  ++at;
  return true;
}

// The fields of a date as the history's rows carry it. Only the plain shape is taken: a year of
// four digits from 1900 on, fields in their ranges, single separators. Whatever strptime would
// read otherwise (spaces before a number, a second 60, a shorter year) is left to it.
bool readDate(const std::string& text, std::tm& fields) {
  const char* at = text.data();
  const char* end = at + text.size();
  int year = 0;
  int month = 0;
  if (!(readField(at, end, 4, 1900, 9999, year) && readSeparator(at, end, '-') &&
        readField(at, end, 2, 1, 12, month) && readSeparator(at, end, '-') &&
        readField(at, end, 2, 1, 31, fields.tm_mday) && readSeparator(at, end, ' ') &&
        readField(at, end, 2, 0, 23, fields.tm_hour) && readSeparator(at, end, ':') &&
        readField(at, end, 2, 0, 59, fields.tm_min) && readSeparator(at, end, ':') &&
        readField(at, end, 2, 0, 59, fields.tm_sec))) {
    return false;
  }
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  return true;
}

// Days from 1970-01-01 to the given date of the proleptic Gregorian calendar; a day of the
// month past the month's end counts on into the next month, as mktime takes it.
long daysFromCivil(int year, int month, int day) {
  year -= month <= 2 ? 1 : 0;
  const long era = (year >= 0 ? year : year - 399) / 400;
  const long year_of_era = year - era * 400;
  const long day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const long day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
  return era * 146097 + day_of_era - 719468;
}

long localSeconds(std::tm fields) {
  return static_cast<long>(std::mktime(&fields));
}

} // namespace

long LocalDateReader::seconds(const std::string& text) {
  std::tm fields{};
  if (!readDate(text, fields)) {
    return stringToSec(text, kDateFormat);
  }
  const long date = daysFromCivil(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday);
  if (!known || date != day) {
    // mktime reads the fields as standard time (tm_isdst 0): daylight saving does not move the
    // offset, only a change of the zone's standard time does, and that shows at one end.
    std::tm first = fields;
    first.tm_hour = first.tm_min = first.tm_sec = 0;
    std::tm last = first;
    last.tm_hour = 23;
    last.tm_min = last.tm_sec = 59;
    offset = localSeconds(first) - date * kSecondsPerDay;
    steady = localSeconds(last) - (date * kSecondsPerDay + kSecondsPerDay - 1) == offset;
    day = date;
    known = true;
  }
  if (!steady) {
    return localSeconds(fields);
  }
  return date * kSecondsPerDay + fields.tm_hour * 3600L + fields.tm_min * 60L + fields.tm_sec +
         offset;
}

std::chrono::system_clock::time_point stringToDateTime(std::string text) {
  std::tm broken{};
  std::istringstream stream(text);
  stream >> std::get_time(&broken, "%Y-%m-%d %H:%M:%S");
  return std::chrono::system_clock::from_time_t(std::mktime(&broken));
}
