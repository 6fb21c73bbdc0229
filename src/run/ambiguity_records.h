// Records of ambiguities: the segments that data preparation finds, and their values in a solution.
#pragma once

#include <array>
#include <vector>

#include "foundation/epoch.h"
#include "foundation/satellite.h"

namespace vornel {

// A stretch of epochs of one satellite in which its carrier phase is continuous.
class AmbiguityPara {
  public:
    int sat;
    int firstEpoch;         // index into the epochs of the run
    int lastEpoch;          // inclusive
    double refAmbF1 = 0.0;  // GLONASS: ambiguity of the reference satellite, cycles
    double refAmbF2 = 0.0;

    AmbiguityPara(int satNumber, int first, int last)
        : sat(satNumber), firstEpoch(first), lastEpoch(last) {}
    AmbiguityPara(const AmbiguityPara&) = default;
    AmbiguityPara& operator=(const AmbiguityPara&) = default;
    virtual ~AmbiguityPara() = default;
};

// One ambiguity of a solution; it serves both frequencies of model 3.
class AmbRstInfo {
  public:
    int sat = -1;
    int firstEpoch = -1;
    int lastEpoch = -1;  // inclusive
    Epoch firstTime;
    Epoch lastTime;
    double rms1 = 0.0;  // metres; during a pass the sum of squares
    double rms2 = 0.0;  // second frequency block (model 3)
    int rows1 = 0;      // kept
    int rows2 = 0;
    int rejected1 = 0;
    int rejected2 = 0;
    double value1 = 0.0;  // cycles; 0.0 means not yet set
    double value2 = 0.0;

    AmbRstInfo() = default;
    AmbRstInfo(const AmbRstInfo&) = default;
    AmbRstInfo& operator=(const AmbRstInfo&) = default;
    virtual ~AmbRstInfo() = default;

    void ResetStatistics();
};

// A new record of the same track: satellite, stretch and times.
AmbRstInfo TrackOf(const AmbRstInfo& source);

// Same satellite, same stretch.
bool SameTrack(const AmbRstInfo& left, const AmbRstInfo& right);

// Order of all lists: first epoch, last epoch, satellite.
void SortAmbiguities(std::vector<AmbiguityPara>& list);
void SortAmbiguities(std::vector<AmbRstInfo>& list);  // stable

// A list's records by satellite, for many lookups in a list that does not change meanwhile.
class AmbiguityIndex {
  public:
    template <class Record>
    explicit AmbiguityIndex(const std::vector<Record>& list) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (list[i].sat >= 1 && list[i].sat <= kSatelliteCount) {
                bySat_[static_cast<std::size_t>(list[i].sat)].push_back(
                    {list[i].firstEpoch, list[i].lastEpoch, static_cast<int>(i)});
            }
        }
    }
    // As FindAmbiguity.
    int Find(int sat, int epoch) const {
        for (const Stretch& stretch : bySat_[static_cast<std::size_t>(sat)]) {
            if (stretch.firstEpoch <= epoch && epoch <= stretch.lastEpoch) {
                return stretch.position;
            }
        }
        return -1;
    }

  private:
    struct Stretch {
        int firstEpoch, lastEpoch, position;
    };
    std::array<std::vector<Stretch>, kSatelliteCount + 1> bySat_;
};

// Index of the first record of the satellite whose stretch holds the epoch, or -1.
int FindAmbiguity(const std::vector<AmbRstInfo>& list, int sat, int epoch);
int FindAmbiguity(const std::vector<AmbiguityPara>& list, int sat, int epoch);

}  // namespace vornel
