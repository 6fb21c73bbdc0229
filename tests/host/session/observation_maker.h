// Small observation sets made by hand.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "io/observations.h"

namespace vornel::test {

// Columns are codes of RINEX 3 for every system alike ("C1C L1C C2W L2W").
class ObservationMaker {
  public:
    explicit ObservationMaker(const std::string& columns, double version = 3.04) {
        observations_.file = "made.rnx";
        observations_.version = version;
        observations_.stations.emplace_back();
        observations_.signalTables.emplace_back();
        std::vector<io::Signal> signals;
        for (std::size_t i = 0; i + 3 <= columns.size(); i += 4) {
            const std::string name = columns.substr(i, 3);
            signals.push_back({{name[0], name[1], name[2]}, name});
        }
        observations_.signalTables[0].fill(signals);
        columns_ = signals.size();
    }

    ObservationMaker& Epoch(int week, double seconds) {
        io::ObservationEpoch epoch;
        epoch.time = {week, seconds};
        epoch.firstSatellite = static_cast<std::uint32_t>(observations_.satellites.size());
        observations_.epochs.push_back(epoch);
        return *this;
    }

    ObservationMaker& Moving() {
        observations_.epochs.back().moving = true;
        return *this;
    }

    // Values by column; missing ones at the end are absent.
    ObservationMaker& Satellite(io::GnssSystem system, int number, std::vector<double> values) {
        values.resize(columns_, NAN);
        io::SatelliteRow row;
        row.satellite = {system, static_cast<std::uint8_t>(number)};
        row.firstValue = static_cast<std::uint32_t>(observations_.values.size());
        observations_.values.insert(observations_.values.end(), values.begin(), values.end());
        observations_.lossOfLock.resize(observations_.values.size());
        observations_.signalStrength.resize(observations_.values.size());
        observations_.satellites.push_back(row);
        ++observations_.epochs.back().satelliteCount;
        return *this;
    }

    io::Observations Done() const { return observations_; }

  private:
    io::Observations observations_;
    std::size_t columns_ = 0;
};

}  // namespace vornel::test
