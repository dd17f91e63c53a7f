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

long stringToSec(std::string text, std::string format) {
  std::tm broken{};
  strptime(text.c_str(), format.c_str(), &broken);
  return static_cast<long>(std::mktime(&broken));
}

std::chrono::system_clock::time_point stringToDateTime(std::string text) {
  std::tm broken{};
  std::istringstream stream(text);
  stream >> std::get_time(&broken, "%Y-%m-%d %H:%M:%S");
  return std::chrono::system_clock::from_time_t(std::mktime(&broken));
}
