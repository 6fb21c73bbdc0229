// A fixture for tests that read the process-wide ephemeris stores: they start and end empty.
#pragma once

#include <gtest/gtest.h>

#include "orbit/broadcast_ephemeris.h"
#include "orbit/glonass_orbit.h"
#include "orbit/precise_ephemeris.h"

namespace vornel::testing_support {

inline void ClearOrbitStores() {
    GpsStore().Clear();
    BdsStore().Clear();
    GalileoStore().Clear();
    GlonassEphemerides().Clear();
    for (int component = 0; component < 4; ++component) {
        PreciseStore(component).satellites.clear();
    }
}

class EmptyOrbitStores : public ::testing::Test {
  protected:
    void SetUp() override { ClearOrbitStores(); }
    void TearDown() override { ClearOrbitStores(); }
};

}  // namespace vornel::testing_support
