#pragma once

#include <string>

#include "store/DataBase.h"

// A motor's nameplate from MOTOR, read when the object is made. A missing row or a column
// that does not convert leaves the fields at 0 (the store logs the latter), and the motor is
// then invalid. `message` is never filled, so the log line for an invalid motor is empty.
class DataMotor {
public:
  // Reads MOTOR row id and sets `valid`. db is borrowed and outlives the object.
  DataMotor(DataBase* db, int id);

  // Reads the row into the nameplate fields.
  void readData();
  // A usable nameplate: power and speed of at least 2 and a pole count above 0.
  bool verify() const;
  // "<id> <power> <speed>\n".
  std::string print() const;

  int id = 0;
  bool valid = false;
  std::string message;
  int power = 0;
  int speed = 0;
  int i = 0;
  int u = 0;
  int p2 = 0; // poles
  int class_vibro = 0;

private:
  DataBase* db;
};
