#include "io/observation_reader.h"

#include "io/file_kind.h"

namespace vornel::io {

Observations ReadObservations(std::string_view bytes, const std::string& name,
                              const ObservationSelection& selection) {
    const FileKind kind = RecogniseFile(bytes, name);
    if (kind == FileKind::kObservation) {
        return ReadRinexObservations(bytes, name, selection);
    }
    if (kind == FileKind::kCompactObservation) {
        return ReadCompactRinex(bytes, name, selection);
    }
    throw InputError(InputFault::kWrongKind, name, 1,
                     std::string("it is a ") + KindName(kind) + ", not observations",
                     "give a RINEX observation file");
}

}  // namespace vornel::io
