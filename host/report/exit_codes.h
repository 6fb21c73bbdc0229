// What the command ends with. Below 20: a run took place, or the command was misused. From 20 to
// 99: bad input, one code for each kind. docs/exit-codes.md tells the same to users.
#pragma once

#include <span>

#include "io/input_error.h"
#include "session/fault.h"
#include "solve/trust.h"

namespace vornel::report {

enum class ExitCode : int {
    kTrusted = 0,  // also: info, config, --help and --version did what they were asked
    kInternal = 1,
    kUsage = 2,
    kFloat = 3,
    kTripleDifference = 4,
    kNoEpochs = 5,
    kNoReference = 6,
    kNoTripleDifference = 7,
    kDoubtful = 8,
    kOutput = 12,

    kMissingFile = 20,
    kUnreadable = 21,
    kEmpty = 22,
    kTruncated = 23,
    kUnknownKind = 24,
    kUnsupportedVersion = 25,
    kMalformed = 26,
    kDamagedPacking = 27,
    kTooLarge = 28,

    kDifferentDays = 30,
    kNoCommonEpochs = 31,
    kNoNavigation = 32,
    kNoPosition = 33,
    kNoOrbitCoverage = 34,
    kNoCommonSignals = 35,
    kBaseContradicted = 36,
    kWrongRole = 37,
    kUnassignedObservations = 38,

    kConfigSyntax = 40,
    kConfigKey = 41,
    kConfigValue = 42
};

struct ExitCodeEntry {
    ExitCode code;
    const char* meaning;
};

// Every code, ascending.
std::span<const ExitCodeEntry> AllExitCodes();

ExitCode CodeOf(io::InputFault fault);
ExitCode CodeOf(session::Fault fault);

// Of a run that took place.
ExitCode CodeOf(solve::Grade grade, int status);

}  // namespace vornel::report
