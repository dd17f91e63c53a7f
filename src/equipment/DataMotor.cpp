#include "equipment/DataMotor.h"

DataMotor::DataMotor(DataBase* db_, int id_) : id(id_), db(db_) {
  readData();
  valid = verify();
}

void DataMotor::readData() {
  db->readMotor(id, power, speed, i, u, p2, class_vibro);
}

bool DataMotor::verify() const {
  return power >= 2 && speed >= 2 && p2 > 0;
}

std::string DataMotor::print() const {
  return std::to_string(id) + " " + std::to_string(power) + " " + std::to_string(speed) + "\n";
}
