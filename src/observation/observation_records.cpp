// Construction of the epoch records, and the list of satellites in use.
#include "observation/observation_records.h"

#include <algorithm>

namespace vornel {

RWObsData::RWObsData() {
    std::fill(std::begin(glonassChannel), std::end(glonassChannel), std::int16_t{-1});
}

ZDObsData::ZDObsData(int ephemerisSourceOfRun, int gps, int glonass, int bds, int galileo,
                     int tropoModelOfRun)
    : ephemerisSource(ephemerisSourceOfRun),
      useGps(gps),
      useGlonass(glonass),
      useBds(bds),
      useGalileo(galileo),
      tropoModel(tropoModelOfRun) {}

SDObsData::SDObsData(int tropoModelOfRun) : tropoModel(tropoModelOfRun) {}

bool SDObsData::IsActive(int satNumber) const {
    return std::find(activeSats.begin(), activeSats.end(), satNumber) != activeSats.end();
}

void SDObsData::RemoveActive(int satNumber) {
    std::erase(activeSats, satNumber);
}

}  // namespace vornel
