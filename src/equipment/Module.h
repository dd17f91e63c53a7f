#pragma once

#include <string>

#include "store/DataBase.h"

// A sensor module: its MODULE row and the machine and organization it reports for, read from
// the store when the object is made. Store failures of the read are swallowed by the store,
// which logs them; a module that is not in MODULE keeps type 0 and configuration 0x80000000.
//
// The loop and the recalculation job use the fields as the constructor left them; `valid` and
// `message` are filled only by readData.
class Module {
public:
  // Reads the module of source at once. db is borrowed and outlives the object.
  Module(DataBase* db, long source);

  // Sets `valid` from verify() and returns it; reads nothing more.
  bool readData();
  // True for a module of a known type (type above 0); otherwise fills `message`.
  bool verify();
  // "<source> : <type_module> <revision>\n".
  std::string print() const;

  long source = 0;
  int aggregate_id = 0; // the machine of the module's last active channel binding
  bool valid = false;
  std::string message;
  int type_module = 0;
  int gateway_id = 0;
  int broadcasting_period = 0; // minutes
  int revision = 0;
  bool multichannel = false;
  unsigned int config = 0; // the option word handed to the math blocks
  int id = 0;
  std::string utc_value;          // the organization's offset, such as "+3:00"
  std::string organization_alias; // alias of the organization the machine belongs to
  int reserved = 0;               // carried for the record; nothing reads it

private:
  DataBase* db;
};
