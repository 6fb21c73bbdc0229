#include "session/sky.h"

#include <cmath>

#include "session/broadcast_orbit.h"

namespace vornel::session {

std::map<EngineSatellite, std::vector<SkyPoint>> SkyTracks(const Session& session,
                                                           const FeedSummary& fed, double step) {
    std::map<EngineSatellite, std::vector<SkyPoint>> tracks;
    const Geodetic place = ToGeodetic(session.base.position);
    for (const auto& [satellite, epochs] : fed.common) {
        std::vector<SkyPoint>& track = tracks[satellite];
        for (const std::uint32_t epoch : epochs) {
            const io::GpsTime& time = fed.times[epoch];
            if (!track.empty() && io::SecondsBetween(fed.times[track.back().epoch], time) < step) {
                continue;
            }
            constexpr double kFlight = 0.075;  // s, near enough for a direction
            const auto state =
                BroadcastState(session.ephemerides, satellite, io::Shifted(time, -kFlight));
            if (!state) {
                continue;
            }
            const Vector3 neu = ToNeu(place, Minus(state->position, session.base.position));
            const double azimuth = std::atan2(neu[1], neu[0]);
            track.push_back({epoch, azimuth < 0.0 ? azimuth + 2.0 * M_PI : azimuth,
                             std::atan2(neu[2], std::hypot(neu[0], neu[1]))});
        }
        if (track.empty()) {
            tracks.erase(satellite);
        }
    }
    return tracks;
}

}  // namespace vornel::session
