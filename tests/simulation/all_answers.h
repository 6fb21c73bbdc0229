// Everything that the engine answers after a run, as text that two runs share only if they agree to
// the bit.
#pragma once

#include <string>

namespace vornel::simulation {

// Asks every query of the public header, of each solution by its place in the list and by its solve
// model. `status` is what StartProcess gave. Doubles are hexadecimal.
std::string AllAnswers(int status);

}  // namespace vornel::simulation
