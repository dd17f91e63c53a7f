#include "logging/PrintLog.h"

#include <iostream>
#include <utility>

PrintLog::PrintLog(bool console, bool file, std::string file_name_)
    : file_name(std::move(file_name_)), print_console(console), print_file(file) {}

void PrintLog::print(std::string text) {
  if (text.empty()) {
    return;
  }
  if (print_console) {
    std::cout << text << std::flush;
  }
  if (print_file) {
    appendToFile(text);
  }
}

void PrintLog::print(bool console, bool file, std::string text) {
  if (console) {
    std::cout << text << std::flush;
  }
  if (file && print_file) {
    appendToFile(text);
  }
}

void PrintLog::setPrintFile(bool file) {
  print_file = file;
}

void PrintLog::appendToFile(const std::string& text) {
  stream.open(file_name, std::ios::out | std::ios::app);
  if (stream.is_open()) {
    stream << text;
  }
  stream.close();
  stream.clear();
}
