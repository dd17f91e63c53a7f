// vek-synth: prints the statements that store measurement rows of a synthesized motor's type 10
// module, for demonstrations and trials of a plant. Usage:
//   vek-synth SOURCE FIRST_ID DEPTH...
// one row per DEPTH (g of an outer-race defect), ids from FIRST_ID on, dated ten minutes apart
// and ending now. The motor: two pole pairs on 49.93 Hz at 3.12 % slip, 0.15 g at its rotor
// frequency, a 6205-sized bearing, a little noise.
#include "synth/MachineSignals.h"

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: vek-synth SOURCE FIRST_ID DEPTH...\n");
    return 2;
  }
  const long source = std::stol(argv[1]);
  const int first = std::stoi(argv[2]);
  for (int k = 3; k < argc; ++k) {
    synth::Machine m;
    m.supply = 49.93, m.slip = 0.0312, m.harmonics[0] = 0.15, m.noise = 0.002;
    m.bearing = {52.5, 7.94, 0.2618, 9};
    m.outer_race = std::stod(argv[k]);
    m.seed = unsigned(k);
    const int late = 10 * (argc - 1 - k);
    std::fputs(synth::type10Row(m, first + k - 3, source,
                                "now() - interval '" + std::to_string(late) + " minutes'")
                   .c_str(),
               stdout);
  }
  return 0;
}
