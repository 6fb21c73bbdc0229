#include "io/observation_reader.h"

#include "io/file_kind.h"

namespace vornel::io {

Observations ReadObservations(LineCursor& text, const ObservationSelection& selection) {
    const FileKind kind = RecogniseFile(text.Head(), text.file());
    if (kind == FileKind::kObservation) {
        return ReadRinexObservations(text, selection);
    }
    if (kind == FileKind::kCompactObservation) {
        return ReadCompactRinex(text, selection);
    }
    throw InputError(InputFault::kWrongKind, text.file(), 1,
                     std::string("it is a ") + KindName(kind) + ", not observations",
                     "give a RINEX observation file");
}

}  // namespace vornel::io
