#include "io/rinex_version.h"

#include "io/text_fields.h"

namespace vornel::io {
namespace {

bool IsRead(double version) {
    const auto isFrom = [version](double first, double last) {
        constexpr double kHalfStep = 0.005;  // versions have two decimals
        return version > first - kHalfStep && version < last + kHalfStep;
    };
    return isFrom(2.00, 2.12) || isFrom(3.00, 3.05) || isFrom(4.00, 4.02);
}

}  // namespace

double ReadRinexVersion(const LineCursor& cursor) {
    const std::string_view text = Trim(Field(cursor.line(), 0, 20));
    const auto version = ParseReal(text);
    if (!version) {
        cursor.Refuse(InputFault::kMalformed, "the version " + Quote(text) + " is not a number");
    }
    if (!IsRead(*version)) {
        cursor.Refuse(InputFault::kUnsupportedVersion,
                      "RINEX version " + std::string(text) + " is not read",
                      "versions 2.00 to 2.12, 3.00 to 3.05 and 4.00 to 4.02 are");
    }
    return *version;
}

}  // namespace vornel::io
