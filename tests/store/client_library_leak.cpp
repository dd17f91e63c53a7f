// The client library's own leak, on its own: a statement on a session the server has ended
// throws broken_connection, and the result that libpq made for the failed statement is never
// freed inside libpqxx 6.4. Nothing of the service is involved. The sanitizer build runs this
// without suppressions and passes only while LeakSanitizer still names that frame, so the
// suppression the suite runs under can go once the library mends it.
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include <pqxx/pqxx>

int main() {
  const char* host = std::getenv("VEK_PGHOST");
  const std::string options = std::string("host=") + (host != nullptr ? host : "") +
                              " dbname=vek user=postgres";
  pqxx::connection victim(options), admin(options);
  const std::string pid = std::to_string(victim.backendpid());
  pqxx::nontransaction(admin).exec("SELECT pg_terminate_backend(" + pid + ")");
  for (int i = 0; i < 100 && !pqxx::nontransaction(admin)
                                  .exec("SELECT 1 FROM pg_stat_activity WHERE pid = " + pid)
                                  .empty();
       ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  try {
    pqxx::work begin(victim);
  } catch (const pqxx::broken_connection&) {
    return 0;
  }
  return 1;
}
