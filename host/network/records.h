// What a network is made of: stations, and the vectors observed between them.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "io/gnss_time.h"
#include "session/geodesy.h"

namespace vornel::network {

using session::Vector3;
using Matrix3 = std::array<double, 9>;  // row by row

// Index of nothing.
inline constexpr std::size_t kNone = static_cast<std::size_t>(-1);

struct KnownPosition {
    Vector3 position{};    // m, ECEF
    bool isFixed = true;   // without error; otherwise:
    Matrix3 covariance{};  // m^2, ECEF
};

struct NetworkStation {
    std::string name;       // unique in the network
    Vector3 approximate{};  // m, ECEF, within a few kilometres
    std::optional<KnownPosition> known;
};

struct NetworkVector {
    std::string id;       // unique in the network
    std::string session;  // vectors of one session share how their antennas were set up
    std::string base;
    std::string rover;
    Vector3 vector{};      // m, ECEF, rover minus base, mark to mark
    Matrix3 covariance{};  // m^2, ECEF, calibrated; vectors count as independent of each other
    io::GpsTime epoch;     // middle of the observations
    std::string grade;     // the verdict on the solution; carried along
    bool isCheck = false;  // closes loops and gets a residual, but has no weight
};

struct Network {
    std::vector<NetworkStation> stations;
    std::vector<NetworkVector> vectors;
};

// Errors that the vectors' own covariances do not know of. Centring errors belong to an occupation (a
// station in a session): they are common to all vectors that meet there in that session.
struct AddedErrors {
    double centringHorizontal = 0.0;  // m, standard deviation in north and in east
    double centringVertical = 0.0;    // m, of the antenna height
    double ppm = 0.0;                 // of a vector's length, in each of its components
};

// A network whose records contradict each other. One line that names the record.
class NetworkError : public std::invalid_argument {
  public:
    using std::invalid_argument::invalid_argument;
};

// The covariance of a position or vector at `place` from standard deviations (m) in north, east, up.
Matrix3 CovarianceFromNeu(const Vector3& place, const Vector3& sigmaNeu);

// Standard deviations (m) in north, east, up at `place` of an ECEF covariance.
Vector3 SigmaNeu(const Vector3& place, const Matrix3& covariance);

}  // namespace vornel::network
