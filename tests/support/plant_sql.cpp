// vek_plant_sql: prints the rows of a typical installation as SQL for psql, so that scripts
// (the demo, the benchmark runs) load a plant without C++.
//
//   vek_plant_sql [--machines N] [--measurements N] [--samples N] [--first-id N]
//                 [--start "YYYY-MM-DD HH:MM:SS"] [--minutes N] | psql -d vek
#include <cstring>
#include <iostream>
#include <string>

#include "support/TypicalPlant.h"

int main(int argc, char** argv) {
  vek_test::TypicalPlant plant;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    if (i + 1 >= argc) {
      std::cerr << "vek_plant_sql: " << option << " needs a value\n";
      return 2;
    }
    const std::string value = argv[++i];
    try {
      if (option == "--machines") {
        plant.machines = std::stoi(value);
      } else if (option == "--measurements") {
        plant.measurements = std::stoi(value);
      } else if (option == "--samples") {
        plant.samples = std::stoi(value);
      } else if (option == "--first-id") {
        plant.first_measurement_id = std::stoi(value);
      } else if (option == "--start") {
        plant.start = value;
      } else if (option == "--minutes") {
        plant.minutes_between = std::stoi(value);
      } else {
        std::cerr << "vek_plant_sql: unknown option " << option << "\n";
        return 2;
      }
    } catch (const std::exception&) {
      std::cerr << "vek_plant_sql: " << option << " takes a number\n";
      return 2;
    }
  }
  vek_test::PlantBuilder builder;
  vek_test::addTypicalPlant(builder, plant);
  std::cout << builder.sql();
  return 0;
}
