#include "equipment/Module.h"

Module::Module(DataBase* db_, long source_) : source(source_), db(db_) {
  db->readModule(source, config, type_module, gateway_id, revision, broadcasting_period,
                 multichannel, aggregate_id, utc_value, organization_alias, id);
}

bool Module::readData() {
  valid = verify();
  return valid;
}

bool Module::verify() {
  if (type_module > 0) {
    return true;
  }
  message = "data of module: " + std::to_string(source) + " is incorrect\n";
  return false;
}

std::string Module::print() const {
  return std::to_string(source) + " : " + std::to_string(type_module) + " " +
         std::to_string(revision) + "\n";
}
