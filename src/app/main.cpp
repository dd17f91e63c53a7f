#include "process/CommandLine.h"
#include "process/process_state.h"
#include "process/start_up.h"

int main(int argc, char* argv[]) {
  process::run_ip = findRunIp();
  installSignalHandlers();
  const CommandLine options = readCommandLine(argc, argv);
  applyCommandLine(options);
  return runService(options, argc, argv);
}
