// A fixture for tests of the exports: no process, closed trace, empty ephemeris stores and the
// atmosphere of a fresh library, before and after each test.
#pragma once

#include <gtest/gtest.h>

#include "exports/process.h"
#include "foundation/trace.h"
#include "observation/ionosphere.h"
#include "observation/troposphere.h"
#include "orbit/orbit_stores.h"

namespace vornel::test {

inline void ForgetProcess() {
    CurrentProcess().Delete();
    TraceClose();
    TraceSetLevel(0);
    testing_support::ClearOrbitStores();
    CurrentIonosphere() = IonosphereParameters{};
    SetSurfaceWeather(18.0, 1013.25, 50.0);
}

class ProcessTest : public ::testing::Test {
  protected:
    void SetUp() override { ForgetProcess(); }
    void TearDown() override { ForgetProcess(); }

    static CTRLSolve& Control() { return *CurrentProcess().control; }
    static StaticSolve& Solver() { return *CurrentProcess().solver; }
};

}  // namespace vornel::test
