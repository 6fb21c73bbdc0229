// The version on the first line of RINEX files of all kinds.
#pragma once

#include "io/line_cursor.h"

namespace vornel::io {

// The version that the cursor's line tells, e.g. 2.11; a bare "2" is 2.00. Refuses text that is no
// number and versions that are not read.
double ReadRinexVersion(const LineCursor& cursor);

}  // namespace vornel::io
