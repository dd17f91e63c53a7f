#pragma once

// The door through which tests reach the private value texts and reading rules of
// WorkPostgreSQL, to prove them against real statements and real rows.

#include <pqxx/pqxx>
#include <sstream>
#include <string>

#include "store/WorkPostgreSQL.h"

struct WorkPostgreSQLProbe {
  template <typename T> static std::string numberText(T value) {
    return WorkPostgreSQL::numberText(value);
  }
  template <typename T> static std::string floatText(T value) {
    return WorkPostgreSQL::floatText(value);
  }
  static std::string boolText(bool value) { return WorkPostgreSQL::boolText(value); }
  static std::string optionalId(long id) { return WorkPostgreSQL::optionalId(id); }
  static std::string optionalIdCondition(long id) {
    return WorkPostgreSQL::optionalIdCondition(id);
  }
  static std::string quoted(const std::string& text) { return WorkPostgreSQL::quoted(text); }
  static std::string optionalQuoted(const std::string& text) {
    return WorkPostgreSQL::optionalQuoted(text);
  }
  static std::string optionalQuotedCondition(const std::string& text) {
    return WorkPostgreSQL::optionalQuotedCondition(text);
  }
  template <typename T>
  static void readField(std::stringstream& stream, const pqxx::field& field, T& target) {
    WorkPostgreSQL::readField(stream, field, target);
  }
  static std::string textField(const pqxx::field& field) {
    return WorkPostgreSQL::textField(field);
  }
};
