#pragma once

#include <fstream>
#include <string>

// The log writer: routes finished text (with its own line end and time stamp) to standard
// output and/or to one log file. The file is opened and closed around every write, so an
// operator can rotate or delete it while the service runs and a crash loses no buffered line.
// One object belongs to one thread; there is no lock.
class PrintLog {
public:
  // Stores the three values; no file is opened here.
  PrintLog(bool console, bool file, std::string file_name);

  // Empty text writes nothing. Otherwise to standard output if console output is on, and
  // appended to the file if file output is allowed. A file that cannot be opened loses the
  // text silently: logging never stops a measurement.
  void print(std::string text);

  // The flags choose for this call: `console` writes to standard output whatever the
  // object's console flag; `file` appends only if file output is allowed. Used as
  // (false, true) for file-only lines and (true, false) for result lines.
  void print(bool console, bool file, std::string text);

  // Switches file output on or off at run time (the service setting "log").
  void setPrintFile(bool file);

private:
  void appendToFile(const std::string& text);

  std::string file_name;
  bool print_console = true;
  bool print_file = false;
  std::ofstream stream;
};
