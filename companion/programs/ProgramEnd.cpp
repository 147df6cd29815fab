#include "companion/programs/ProgramEnd.h"

namespace companion {

std::string endedBySignal(int signal) {
  return "it was ended by signal " + std::to_string(signal);
}

std::string endedWithStatus(int status) {
  return "it ended with status " + std::to_string(status);
}

}  // namespace companion
