#include "report/exit_codes.h"

#include <array>

#include "engine/status.h"

namespace vornel::report {
namespace {

using E = ExitCode;

constexpr std::array kCodes = {
    ExitCodeEntry{E::kTrusted,
                  "trusted fixed solution; or info, config, --help, --version succeeded"},
    ExitCodeEntry{E::kInternal, "internal error of the command or the engine"},
    ExitCodeEntry{E::kUsage, "the command line is wrong"},
    ExitCodeEntry{E::kFloat, "float solution: the ambiguities could not be fixed with certainty"},
    ExitCodeEntry{E::kTripleDifference,
                  "triple-difference solution only: the float solution failed"},
    ExitCodeEntry{E::kNoEpochs, "no solution: no epoch reached the engine"},
    ExitCodeEntry{E::kNoReference, "no solution: no usable reference satellite"},
    ExitCodeEntry{E::kNoTripleDifference, "no solution: the triple difference failed"},
    ExitCodeEntry{E::kDoubtful,
                  "fixed solution that its checks do not confirm, or that something contradicts"},
    ExitCodeEntry{E::kOutput, "an output file could not be written"},
    ExitCodeEntry{E::kMissingFile, "a file does not exist"},
    ExitCodeEntry{E::kUnreadable, "a file cannot be opened or read"},
    ExitCodeEntry{E::kEmpty, "a file is empty"},
    ExitCodeEntry{E::kTruncated, "a file is cut off"},
    ExitCodeEntry{E::kUnknownKind, "a file is of no kind that is known"},
    ExitCodeEntry{E::kUnsupportedVersion, "a file has a version that is not read"},
    ExitCodeEntry{E::kMalformed, "a file has a line that its format does not allow"},
    ExitCodeEntry{E::kDamagedPacking, "a compressed file does not unpack"},
    ExitCodeEntry{E::kTooLarge, "a file is beyond the limits of the readers"},
    ExitCodeEntry{E::kDifferentDays, "the two stations were observed on different days"},
    ExitCodeEntry{E::kNoCommonEpochs, "the two stations have no common epoch"},
    ExitCodeEntry{E::kNoNavigation, "no navigation for the session"},
    ExitCodeEntry{E::kNoPosition, "a station without position"},
    ExitCodeEntry{E::kNoOrbitCoverage, "precise orbits that do not cover the session"},
    ExitCodeEntry{E::kNoCommonSignals, "no satellite or signal that both receivers observed"},
    ExitCodeEntry{E::kBaseContradicted, "the data contradict the position of the base"},
    ExitCodeEntry{E::kWrongRole, "a file of the wrong kind for where it was given"},
    ExitCodeEntry{E::kUnassignedObservations, "observations of neither station"},
    ExitCodeEntry{E::kConfigSyntax, "the configuration file is not TOML"},
    ExitCodeEntry{E::kConfigKey, "the configuration file has an unknown key"},
    ExitCodeEntry{E::kConfigValue, "the configuration file has a value that cannot be taken"},
};

}  // namespace

std::span<const ExitCodeEntry> AllExitCodes() {
    return kCodes;
}

ExitCode CodeOf(io::InputFault fault) {
    switch (fault) {
        case io::InputFault::kMissingFile:
            return E::kMissingFile;
        case io::InputFault::kUnreadable:
            return E::kUnreadable;
        case io::InputFault::kEmpty:
            return E::kEmpty;
        case io::InputFault::kTruncated:
            return E::kTruncated;
        case io::InputFault::kWrongKind:
            return E::kUnknownKind;
        case io::InputFault::kUnsupportedVersion:
            return E::kUnsupportedVersion;
        case io::InputFault::kMalformed:
            return E::kMalformed;
        case io::InputFault::kDamagedPacking:
            return E::kDamagedPacking;
        case io::InputFault::kTooLarge:
            return E::kTooLarge;
    }
    return E::kInternal;
}

ExitCode CodeOf(session::Fault fault) {
    switch (fault) {
        case session::Fault::kDifferentDays:
            return E::kDifferentDays;
        case session::Fault::kNoCommonEpochs:
            return E::kNoCommonEpochs;
        case session::Fault::kNoNavigation:
            return E::kNoNavigation;
        case session::Fault::kNoPosition:
            return E::kNoPosition;
        case session::Fault::kNoOrbitCoverage:
            return E::kNoOrbitCoverage;
        case session::Fault::kNoCommonSignals:
            return E::kNoCommonSignals;
        case session::Fault::kBaseContradicted:
            return E::kBaseContradicted;
        case session::Fault::kWrongRole:
            return E::kWrongRole;
        case session::Fault::kUnassignedObservations:
            return E::kUnassignedObservations;
    }
    return E::kInternal;
}

ExitCode CodeOf(solve::Grade grade, int status) {
    switch (grade) {
        case solve::Grade::kTrusted:
            return E::kTrusted;
        case solve::Grade::kDoubtful:
            return E::kDoubtful;
        case solve::Grade::kFloat:
            return E::kFloat;
        case solve::Grade::kApproximate:
            return E::kTripleDifference;
        case solve::Grade::kNone:
            break;
    }
    switch (engine::DescribeStatus(status).kind) {
        case engine::StatusKind::kNoReference:
            return E::kNoReference;
        case engine::StatusKind::kNoEpochs:
        case engine::StatusKind::kNoPeriod:
            return E::kNoEpochs;
        default:
            return E::kNoTripleDifference;
    }
}

}  // namespace vornel::report
